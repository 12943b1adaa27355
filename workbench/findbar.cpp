#include "workbench/findbar.h"

#include "wavemonitor/rulerview.h"
#include "wavemonitor/signaltreemodel.h"
#include "wavemonitor/signaltreeview.h"
#include "wavemonitor/tree/layoutnode.h"
#include "wavemonitor/wavemonitorwidget.h"
#include "workbench/triggernote.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QSpinBox>
#include <QToolButton>

#include <algorithm>

using namespace VEK;
using WaveMonitor::LayoutNode;
using WaveMonitor::SignalElement;
using WaveMonitor::WaveMonitorWidget;

namespace {

constexpr int Pause = 120; ///< ms

/// What a net is called in the search; names of rows may repeat, numbers of signals don't.
QString netOf(int id)
{
    return QStringLiteral("#%1").arg(id);
}

/// The signals below an index, the highest first.
void addMembers(QAbstractItemModel const& model, QModelIndex const& index, SignalItem& bus)
{
    for (int i = 0; i < model.rowCount(index); ++i) {
        QModelIndex const row = model.index(i, 0, index);
        LayoutNode const* const node = WaveMonitor::SignalTreeView::nodeAt(row);
        if (node->type == LayoutNode::Bus)
            addMembers(model, row, bus);
        if (node->type != LayoutNode::Signal)
            continue;
        SignalItem member;
        member.name = netOf(node->id);
        member.text = row.data().toString();
        bus.signalList << member;
    }
}

/// Rows by what they are called, and all that was captured by its own names.
SearchedSamples samplesOf(WaveMonitorWidget const& monitor)
{
    SearchedSamples searched;
    auto const* const model = monitor.model();
    searched.length = model->timeLength();
    searched.windowLength = qMax(1, searched.length / monitor.windowsNum());
    for (int i = 0; i < model->rowCount(); ++i) {
        QModelIndex const row = model->index(i, 0);
        LayoutNode const* const node = WaveMonitor::SignalTreeView::nodeAt(row);
        SignalItem item;
        item.text = row.data().toString();
        item.name = node->type == LayoutNode::Signal ? netOf(node->id) : item.text;
        addMembers(*model, row, item);
        if (node->type == LayoutNode::Signal || !item.signalList.isEmpty())
            searched.items << item;
    }
    for (SignalElement const* element : model->signalElements()) {
        if (element->data.size() != searched.length)
            continue;
        searched.samples.insert(netOf(element->id), element->data);
        for (QString const& name : {element->text, element->name}) {
            SignalItem item;
            item.name = netOf(element->id);
            item.text = name;
            searched.items << item;
        }
    }
    return searched;
}

QStringList selectedNames(WaveMonitorWidget const& monitor)
{
    QStringList names;
    for (QModelIndex const& row : monitor.treeView()->selectedRowList())
        if (WaveMonitor::SignalTreeView::nodeAt(row)->type != LayoutNode::Divider)
            names << row.data().toString();
    return names;
}

QToolButton* makeButton(QString const& text, QString const& tip, QWidget* parent)
{
    auto* const button = new QToolButton(parent);
    button->setText(text);
    button->setToolTip(tip);
    return button;
}

} // namespace

FindBar::FindBar(std::function<Monitor*()> current, QWidget* parent)
    : QWidget(parent), m_current(std::move(current)), m_text(new QLineEdit(this)),
      m_longer(new QSpinBox(this)), m_count(new QLabel(this)),
      m_note(makeNote(QStringLiteral("findNote"), this))
{
    m_text->setObjectName(QStringLiteral("findText"));
    m_text->setPlaceholderText(QStringLiteral(
        "Find: valid & addr == 0x51, or for the selected rows: == 0x51, in 3..7, rises"));
    m_longer->setObjectName(QStringLiteral("findLonger"));
    m_longer->setPrefix(QStringLiteral("for more than "));
    m_longer->setSuffix(QStringLiteral(" samples"));
    m_longer->setMaximum(100000000);
    m_count->setObjectName(QStringLiteral("findCount"));
    QToolButton* const back =
        makeButton(QStringLiteral("<"), QStringLiteral("Previous (Shift+F3)"), this);
    QToolButton* const forth = makeButton(QStringLiteral(">"), QStringLiteral("Next (F3)"), this);
    QToolButton* const close = makeButton(QStringLiteral("x"), QStringLiteral("Close (Esc)"), this);
    auto* const line = new QHBoxLayout;
    for (QWidget* const widget : {static_cast<QWidget*>(m_text), static_cast<QWidget*>(m_longer),
                                  static_cast<QWidget*>(back), static_cast<QWidget*>(forth),
                                  static_cast<QWidget*>(m_count), static_cast<QWidget*>(close)})
        line->addWidget(widget, widget == m_text ? 1 : 0);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->addLayout(line);
    layout->addWidget(m_note);
    m_pause.setSingleShot(true);
    m_pause.setInterval(Pause);
    connect(&m_pause, &QTimer::timeout, this, &FindBar::search);
    connect(m_text, &QLineEdit::textChanged, &m_pause, QOverload<>::of(&QTimer::start));
    connect(m_longer, QOverload<int>::of(&QSpinBox::valueChanged), &m_pause,
            QOverload<>::of(&QTimer::start));
    connect(back, &QToolButton::clicked, this, &FindBar::previous);
    connect(forth, &QToolButton::clicked, this, &FindBar::next);
    connect(close, &QToolButton::clicked, this, &QWidget::hide);
    hide();
}

void FindBar::begin()
{
    show();
    m_text->setFocus();
    m_text->selectAll();
    search();
}

void FindBar::searchAgain()
{
    if (isVisible())
        search();
}

void FindBar::search()
{
    m_pause.stop();
    Monitor* const monitor = m_current();
    QString const typed = m_text->text();
    if (!monitor || typed.trimmed().isEmpty()) {
        showNote(*m_note, QString(), false);
        return showHits({});
    }
    QString const text = textForRows(typed, selectedNames(*monitor));
    SearchResult const result = findSamples(text, m_longer->value(), samplesOf(*monitor));
    showNote(*m_note, errorNote(text, result.errors), true);
    showHits(result.hits);
}

void FindBar::showHits(QVector<int> const& hits)
{
    m_hits = hits;
    QString const count = hits.size() == 1
                              ? QStringLiteral("1 hit")
                              : QStringLiteral("%1 hits").arg(QLocale::c().toString(hits.size()));
    m_count->setText(m_text->text().isEmpty() ? QString() : count);
    if (Monitor* const monitor = m_current())
        monitor->rulerView()->setHits(hits);
}

void FindBar::next()
{
    go(true);
}

void FindBar::previous()
{
    go(false);
}

/// From the cursor on, round to the other end.
void FindBar::go(bool forward)
{
    if (m_pause.isActive())
        search();
    Monitor* const monitor = m_current();
    if (!monitor || m_hits.isEmpty())
        return;
    int const cursor = monitor->cursorTime();
    auto const behind = std::upper_bound(m_hits.cbegin(), m_hits.cend(), cursor);
    auto const from = std::lower_bound(m_hits.cbegin(), m_hits.cend(), cursor);
    bool const wraps = forward ? behind == m_hits.cend() : from == m_hits.cbegin();
    auto const hit =
        forward ? (wraps ? m_hits.cbegin() : behind) : (wraps ? m_hits.cend() : from) - 1;
    monitor->setCursorTime(*hit);
    monitor->jump(*hit);
    QLocale const c = QLocale::c();
    m_count->setText(QStringLiteral("%1 of %2%3")
                         .arg(c.toString(int(hit - m_hits.cbegin()) + 1), c.toString(m_hits.size()),
                              !wraps    ? QString()
                              : forward ? QStringLiteral(", from the start again")
                                        : QStringLiteral(", from the end again")));
}

void FindBar::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        return hide();
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        return go(!(event->modifiers() & Qt::ShiftModifier));
    QWidget::keyPressEvent(event);
}

void FindBar::hideEvent(QHideEvent* event)
{
    if (Monitor* const monitor = m_current())
        monitor->rulerView()->setHits({});
    QWidget::hideEvent(event);
}
