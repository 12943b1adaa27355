#include "wavemonitor/wavemonitorwidget.h"

#include "wavemonitor/constants.h"
#include "wavemonitor/drawconfig.h"
#include "wavemonitor/notificationcenter.h"
#include "wavemonitor/ruler/overviewstrip.h"
#include "wavemonitor/rulerview.h"
#include "wavemonitor/signalelement.h"
#include "wavemonitor/signaltreemodel.h"
#include "wavemonitor/signaltreeview.h"
#include "wavemonitor/waveview.h"

#include <QEvent>
#include <QGraphicsItem>
#include <QGraphicsScene>
#include <QHeaderView>
#include <QLabel>
#include <QScrollBar>
#include <QSplitter>
#include <QVBoxLayout>

namespace WaveMonitor {

namespace {

constexpr int CaptionHeight = 20;
constexpr int CounterHeight = 30; // with the header as high as the ruler
constexpr int DefaultTreeWidth = 300;

QWidget* column(QWidget* parent, QWidget* above, QWidget* below)
{
    auto* panel = new QWidget(parent);
    auto* layout = new QVBoxLayout(panel);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(above);
    layout->addWidget(below, 1);
    return panel;
}

} // namespace

WaveMonitorWidget::WaveMonitorWidget(unsigned long long domain, QWidget* parent, DrawConfig* config)
    : QWidget(parent)
{
    setDomain(domain);
    NotificationCenter::shared()->registerObserver(
        this, {ZoomAboutToChange, ZoomChanged, Reserved4, DataFormatChanged, MarkerAboutToBeCreated,
               MarkerCreated, ActiveMarkerAboutToChange, ActiveMarkerChanged, RemoveWaveItems,
               RearrangeWaveItems, Reserved21, WaveColorChanged});
    setMinimumHeight(100);
    makeTree(config ? config->nameColumnWidth + config->valueColumnWidth : DefaultTreeWidth);
    makeCaptions();
    makeViews();

    m_autoCounterLabel = new QLabel(this);
    m_autoCounterLabel->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_autoCounterLabel->setFixedHeight(CounterHeight);

    connect(m_treeView->verticalScrollBar(), &QScrollBar::valueChanged, this,
            &WaveMonitorWidget::followTree);
    connect(m_waveView->verticalScrollBar(), &QScrollBar::valueChanged,
            m_treeView->verticalScrollBar(), &QScrollBar::setValue);
    layOut();
}

WaveMonitorWidget::~WaveMonitorWidget()
{
    NotificationCenter::shared()->unregisterObserver(this);
    // The header tells of its geometry once more when it is hidden, and the captions are gone then.
    m_treeView->header()->disconnect(this);
    m_treeView->horizontalScrollBar()->disconnect(this);
    m_treeView->verticalScrollBar()->disconnect(this); // scrolls back when all rows have gone
    m_waveView->setDataSource(nullptr);
    delete m_model; // with the wave items, before the scene that they are in
}

void WaveMonitorWidget::makeTree(int width)
{
    m_model = new SignalTreeModel(this);
    m_model->setDomain(domain());
    m_treeView = new SignalTreeView(this, width);
    m_treeView->setModel(m_model);
    connect(m_model, &SignalTreeModel::layoutEdited, this, &WaveMonitorWidget::layoutEdited);
    m_treeView->setDomain(domain());
}

void WaveMonitorWidget::makeCaptions()
{
    QHeaderView* const header = m_treeView->header();
    // Index widgets of a header go with every reset of its model, so these are put there by hand.
    for (QString const& text : {tr("Name"), tr("Value")}) {
        auto* label = new QLabel(text, header->viewport());
        label->setAlignment(Qt::AlignCenter);
        label->setFont(monitorFontOfPixelSize(12));
        label->setCursor(Qt::ArrowCursor);
        label->setFixedSize(header->sectionSize(m_headerLabels.size()) - 3, CaptionHeight);
        m_headerLabels.append(label);
        m_captionShifts.append(0);
    }
    placeCaptions();
    connect(header, &QHeaderView::sectionResized, this, &WaveMonitorWidget::slots_sectionResized);
    connect(header, &QHeaderView::geometriesChanged, this, &WaveMonitorWidget::placeCaptions);
    connect(m_treeView->horizontalScrollBar(), &QScrollBar::valueChanged, this,
            &WaveMonitorWidget::placeCaptions);
}

void WaveMonitorWidget::placeCaptions()
{
    QHeaderView const* const header = m_treeView->header();
    for (int i = 0; i < m_headerLabels.size(); ++i)
        m_headerLabels.at(i)->move(header->sectionViewportPosition(i) + m_captionShifts.at(i), 0);
}

void WaveMonitorWidget::slots_sectionResized(int index, int, int newSize)
{
    if (index < 0 || index >= m_headerLabels.size())
        return;
    m_headerLabels.at(index)->setFixedSize(qMax(0, newSize - 3), CaptionHeight);
    for (int i = index + 1; i < m_headerLabels.size(); ++i)
        m_captionShifts[i] = -1;
    placeCaptions();
}

void WaveMonitorWidget::makeViews()
{
    m_waveView = new WaveView(this);
    m_waveView->setDomain(domain());
    m_waveView->setDataSource(m_model);
    m_rulerView = new RulerView(this);
    m_rulerView->setDomain(domain());
    m_rulerView->viewport()->installEventFilter(m_waveView);
    m_waveView->setCursorItem(m_rulerView->cursorItem());
    // Not the tree: its editors need their keys.
    m_waveView->installEventFilter(this);
    m_rulerView->installEventFilter(this);

    connect(m_rulerView, &RulerView::updateMarkerAct, this, &WaveMonitorWidget::updateMarkerAct);
    connect(m_waveView, &WaveView::updateMarkerAct, this, &WaveMonitorWidget::updateMarkerAct);
    connect(m_waveView, &WaveView::updateCursorTime, this, &WaveMonitorWidget::onUpdateCursorTime);
    // Whoever moves it: a shorter capture and hosts do, too.
    connect(m_rulerView->cursorItem(), &CursorSliderItem::xChanged, this,
            &WaveMonitorWidget::onUpdateCursorTime);
    connect(m_model, &SignalTreeModel::layoutEdited, m_waveView, &WaveView::layOutEditedRows);
}

void WaveMonitorWidget::layOut()
{
    auto* splitter = new QSplitter(Qt::Horizontal, this);
    splitter->addWidget(column(splitter, m_autoCounterLabel, m_treeView));
    splitter->addWidget(column(splitter, m_rulerView, m_waveView));
    splitter->setChildrenCollapsible(false);
    splitter->setStretchFactor(1, 1);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(splitter);
}

bool WaveMonitorWidget::isOverviewVisible() const
{
    return m_overview && !m_overview->isHidden();
}

void WaveMonitorWidget::setOverviewVisible(bool visible)
{
    if (visible == isOverviewVisible())
        return;
    if (!m_overview) {
        QWidget* const panel = m_rulerView->parentWidget();
        m_overview = new OverviewStrip(m_waveView, m_rulerView, panel);
        static_cast<QVBoxLayout*>(panel->layout())->insertWidget(0, m_overview);
    }
    m_overview->setVisible(visible);
    m_autoCounterLabel->setFixedHeight(CounterHeight + (visible ? OverviewStrip::Height : 0));
}

/// Scrolls the waves to where the tree is. They hear of new rows later than the tree does.
void WaveMonitorWidget::followTree(int value)
{
    QScrollBar* const bar = m_waveView->verticalScrollBar();
    if (value > bar->maximum())
        m_waveView->rearrangeItems();
    bar->setValue(value);
}

void WaveMonitorWidget::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (m_wasShown)
        return;
    m_wasShown = true;
    // Queued: a zoom that was set since, also in the waves themselves, has been heard of by then.
    auto const fitAgain = [this] {
        if (!m_fitWhenShown)
            return;
        zoomFit();
        m_waveView->setZoomRate(m_zoomRate); // before the first picture, and not with the note
    };
    QMetaObject::invokeMethod(this, fitAgain, Qt::QueuedConnection);
}

void WaveMonitorWidget::addData(SignalData const& signal)
{
    m_model->addRawSignal(signal);
    dataChanged();
}

void WaveMonitorWidget::addData(BusData const& bus)
{
    m_model->addBus(bus);
    dataChanged();
}

void WaveMonitorWidget::dataChanged()
{
    m_rulerView->setLength(m_model->timeLength());
    m_rulerView->setNum(m_windowsNum);
    m_model->setWindowsNum(m_windowsNum);
}

void WaveMonitorWidget::setWindowsNum(int count)
{
    m_windowsNum = qMax(1, count);
    m_rulerView->setNum(m_windowsNum);
    m_model->setWindowsNum(m_windowsNum);
    m_waveView->viewport()->update();
}

void WaveMonitorWidget::setTriggerPosition(int time)
{
    m_model->setTriggerPosition(time);
    setCursorTime(time);
    m_waveView->viewport()->update();
}

void WaveMonitorWidget::setDataFormat(DataFormat::Type type)
{
    m_model->setDataFormat(type);
}

DataFormat::Type WaveMonitorWidget::dataFormat() const
{
    return m_model->dataFormat();
}

void WaveMonitorWidget::updataWaveDatas(QList<QBitArray> const& datas)
{
    m_model->updataSingalDatas(datas);
    m_waveView->updateAllItems(); // the capture may be longer or shorter now
    dataChanged();
}

void WaveMonitorWidget::updateAutoCounter(int count)
{
    m_autoCounterLabel->setText(tr("    Autorun Counter: %1").arg(count));
}

void WaveMonitorWidget::setTitle(int window, int core)
{
    m_windowIndex = window;
    m_coreIndex = core;
    setWindowTitle(core == -1 ? tr("window %1").arg(window) : tr("core %1").arg(core));
}

QDomElement WaveMonitorWidget::save(QDomDocument& document) const
{
    return m_model->save(document);
}

QDomElement WaveMonitorWidget::saveLayout(QDomDocument& document) const
{
    return m_model->saveLayout(document);
}

void WaveMonitorWidget::restore(QDomElement const& window)
{
    bool const first = window.attribute(QStringLiteral("index"), QStringLiteral("-1")).toInt() == 0;
    m_model->restore(window);
    dataChanged();
    if (!first)
        return;
    m_treeView->setColumnWidth(0, 180);
    m_treeView->setColumnWidth(1, 120);
    // The value column shows the trigger's sample now, and the cursor stands where it reads.
    setCursorTime(m_model->triggerPosition());
}

void WaveMonitorWidget::restoreLayout(QDomElement const& layout)
{
    m_model->restoreLayout(layout);
}

DrawConfig* WaveMonitorWidget::getDrawConfigs() const
{
    auto* config = new DrawConfig;
    config->coreIndex = m_coreIndex;
    config->windowIndex = m_windowIndex;
    config->nameColumnWidth = m_treeView->columnWidth(0);
    config->valueColumnWidth = m_treeView->columnWidth(1);
    config->layout = saveLayout(config->document);
    config->document.appendChild(config->layout);
    config->dataFormat = dataFormat();
    config->zoomRate = m_zoomRate;
    return config;
}

void WaveMonitorWidget::setWindowConfig(DrawConfig* config)
{
    if (!config)
        return;
    m_treeView->setColumnWidth(0, config->nameColumnWidth);
    m_treeView->setColumnWidth(1, config->valueColumnWidth);
    if (!config->layout.isNull())
        restoreLayout(config->layout);
    setDataFormat(config->dataFormat);
    zoomTo(config->zoomRate);
}

void WaveMonitorWidget::rearrangeWaveItems()
{
    QGraphicsScene* const scene = m_waveView->scene();
    int row = 0;
    for (QGraphicsItem* item : m_model->waveItems()) {
        if (item->scene() != scene)
            scene->addItem(item);
        item->setPos(0, Constants::Graphics::kRowHeight * row++);
    }
}

void WaveMonitorWidget::removeAllWaveItems()
{
    m_waveView->removeAllItems();
}

void WaveMonitorWidget::handleEvents(Notification* note)
{
    if (!note->isFrom(domain()))
        return;
    // An older rate must not undo one that the waves are still to be told of.
    if (note->type != ZoomChanged || m_unheardZooms > 0)
        return;
    double const rate = note->sender->property("zoomRate").toDouble();
    if (rate != m_zoomRate)
        setZoomRate(rate);
}

bool WaveMonitorWidget::eventFilter(QObject* watched, QEvent* event)
{
    return event->type() == QEvent::KeyPress || QWidget::eventFilter(watched, event);
}

} // namespace WaveMonitor
