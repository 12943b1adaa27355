#include "wavemonitor/signaltreemodel.h"

#include "results/windowdocument.h"
#include "results/windowreader.h"
#include "wavemonitor/mlog.h"
#include "wavemonitor/notificationcenter.h"
#include "wavemonitor/tree/layouteditor.h"
#include "wavemonitor/tree/modellayout.h"
#include "wavemonitor/tree/rowdisplay.h"
#include "wavemonitor/tree/signalstore.h"
#include "wavemonitor/tree/treelink.h"
#include "wavemonitor/waves/waveitem.h"
#include "wavemonitor/waves/waveviewdatasource.h"

namespace WaveMonitor {

namespace {

int windowIndex(QDomElement const& window)
{
    return window.attribute(VEK::DOM_ATTR_WINDOW_INDEX, QStringLiteral("-1")).toInt();
}

} // namespace

SignalTreeModel::SignalTreeModel(QObject* parent)
    : QAbstractItemModel(parent), m_store(std::make_unique<SignalStore>()),
      m_layout(std::make_unique<ModelLayout>(this)),
      m_editor(std::make_unique<LayoutEditor>(this, m_layout.get(), m_store.get())),
      m_display(std::make_unique<RowDisplay>(m_layout.get(), m_store.get())),
      m_dataSource(std::make_unique<WaveViewDataSource>(m_layout.get(), this)),
      m_treeLink(std::make_unique<TreeLink>(m_layout.get(), m_dataSource.get()))
{
    NotificationCenter::shared()->registerObserver(
        this, QList<NotificationType>{Reserved4, DataFormatChanged, MarkerAboutToBeCreated,
                                      MarkerCreated, ActiveMarkerAboutToChange, ActiveMarkerChanged,
                                      MarkerAboutToBeRemoved, MarkerRemoved, Reserved21,
                                      WaveColorChanged});
}

SignalTreeModel::~SignalTreeModel()
{
    NotificationCenter::shared()->unregisterObserver(this);
}

void SignalTreeModel::handleEvents(Notification* note)
{
    if (!note->isFrom(domain()))
        return;
    if (note->type == DataFormatChanged || note->type == WaveColorChanged)
        updateTreeView();
}

void SignalTreeModel::post(quint32 type)
{
    NotificationCenter::shared()->postEvent(new Notification(NotificationType(type), this), this);
}

int SignalTreeModel::rowCount(QModelIndex const& parent) const
{
    return parent.column() > NameColumn ? 0 : m_layout->nodeAt(parent)->children.size();
}

QModelIndex SignalTreeModel::index(int row, int column, QModelIndex const& parent) const
{
    return m_layout->index(row, column, parent);
}

QModelIndex SignalTreeModel::parent(QModelIndex const& index) const
{
    if (!index.isValid())
        return QModelIndex();
    LayoutNode const* const parent = m_layout->nodeAt(index)->parent;
    return parent ? m_layout->indexOf(parent) : QModelIndex();
}

QVariant SignalTreeModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 ||
        section >= m_headers.size())
        return QVariant();
    return m_headers.at(section);
}

Qt::ItemFlags SignalTreeModel::flags(QModelIndex const& index) const
{
    if (!index.isValid())
        return Qt::ItemIsDropEnabled;
    Qt::ItemFlags const common = Qt::ItemIsDragEnabled | Qt::ItemIsEnabled;
    if (index.column() != NameColumn)
        return common;
    return common | Qt::ItemIsSelectable | Qt::ItemIsEditable | Qt::ItemIsDropEnabled;
}

QVariant SignalTreeModel::data(QModelIndex const& index, int role) const
{
    if (!m_layout->owns(index))
        return QVariant();
    LayoutNode const* const node = m_layout->nodeAt(index);
    return index.column() == NameColumn ? m_display->nameData(node, role)
                                        : m_display->valueData(node, role, m_currentTime);
}

bool SignalTreeModel::setData(QModelIndex const& index, QVariant const& value, int role)
{
    QString const text = value.toString();
    if (role != Qt::EditRole || !m_layout->owns(index) || index.column() != NameColumn ||
        text.isEmpty())
        return false;
    m_editor->rename(index, text);
    return true;
}

void SignalTreeModel::addRawSignal(SignalData const& signal)
{
    m_layout->appendSignal(m_store->add({signal.id, signal.name, signal.text, signal.data}));
    post(LayoutChanged);
}

void SignalTreeModel::addBus(BusData const& bus)
{
    for (SignalData const& signal : bus.signalDataList)
        m_store->add({signal.id, signal.name, signal.text, signal.data});
    QList<SignalElement*> elements; // an id that is there twice has one element, the last
    for (SignalData const& signal : bus.signalDataList)
        elements.append(m_store->element(signal.id));
    m_layout->appendBus(bus.name, bus.text, elements);
    post(LayoutChanged);
}

void SignalTreeModel::setDataFormat(DataFormat::Type type)
{
    m_dataFormatter.setFormatType(type);
    updateTreeView();
}

void SignalTreeModel::setTriggerPosition(int time)
{
    m_triggerPosition = time;
    setCurrentTime(time);
    post(LayoutChanged);
}

void SignalTreeModel::setCurrentTime(int time)
{
    m_currentTime = time;
    updateTreeView();
}

void SignalTreeModel::setWindowsNum(int count)
{
    m_windowsNum = qMax(1, count);
}

int SignalTreeModel::timeLength() const
{
    return m_store->greatestLength();
}

int SignalTreeModel::oneWindowSize()
{
    return m_store->length(0);
}

QMap<int, SignalElement*> const& SignalTreeModel::signalElements() const
{
    return m_store->elements();
}

SignalElement*
SignalTreeModel::signalElementByID(int id, std::function<void(SignalElement*)> const& visit) const
{
    SignalElement* const element = m_store->element(id);
    if (element && visit)
        visit(element);
    return element;
}

void SignalTreeModel::updataSingalDatas(QList<QBitArray> const& datas)
{
    if (!m_store->replaceSamples(datas))
        return;
    updateItems();
    updateTreeView();
}

void SignalTreeModel::clear()
{
    m_store->clear();
}

QGraphicsItem* SignalTreeModel::getItem(LayoutNode* node) const
{
    return m_dataSource->itemForNode(node);
}

QList<QGraphicsItem*> SignalTreeModel::waveItems()
{
    return m_dataSource->recalculateWaveItems();
}

void SignalTreeModel::updateItems()
{
    m_dataSource->recalculateWaveItems();
}

void SignalTreeModel::updateSignalWaveChart()
{
    m_dataSource->clearSelection();
    updateItems();
}

void SignalTreeModel::updateSignalWaveColor()
{
    m_dataSource->updateWaveColor();
}

void SignalTreeModel::updateSelection(QList<QModelIndex> const& selected,
                                      QList<QModelIndex> const& deselected)
{
    m_treeLink->highlight(selected, deselected);
    post(SelectionChanged);
}

void SignalTreeModel::highlightItem(QGraphicsItem* item)
{
    m_treeLink->selectRowOf(item);
}

void SignalTreeModel::selectOutView(QList<QModelIndex> const& indexes)
{
    m_treeLink->select(indexes);
}

bool SignalTreeModel::indexIsExpanded(QModelIndex const& index) const
{
    return m_treeLink->isExpanded(index);
}

void SignalTreeModel::setTreeView(QTreeView* view)
{
    m_treeLink->setView(view);
}

void SignalTreeModel::updateTreeView()
{
    m_treeLink->repaint();
}

void SignalTreeModel::addRawDivider(int id, QModelIndex const& at)
{
    m_editor->addDivider(id, at);
}

void SignalTreeModel::NewDivider(QModelIndex const& at)
{
    m_editor->addDivider(waveItems().size(), at);
    updateItems();
}

void SignalTreeModel::DeleteDivider(QModelIndex const& parent, QModelIndex const& at)
{
    m_editor->deleteDivider(parent, at);
}

void SignalTreeModel::reverse(QModelIndex const& index)
{
    m_editor->reverse(index);
}

void SignalTreeModel::groupBus(QList<QModelIndex> const& rows)
{
    m_editor->group(rows);
}

void SignalTreeModel::ungroupBus(QModelIndex const& index)
{
    m_editor->ungroup(index);
}

void SignalTreeModel::ChangeLongName(QModelIndex const& index)
{
    m_editor->setNameForm(index, LayoutNode::LongName);
}

void SignalTreeModel::ChangeShortName(QModelIndex const& index)
{
    m_editor->setNameForm(index, LayoutNode::ShortName);
}

void SignalTreeModel::restoreOrgName(QModelIndex const& index)
{
    m_editor->restoreName(index);
}

QList<QModelIndex> SignalTreeModel::insertIndexesForward(QModelIndex const& target,
                                                         QList<QModelIndex> const& indexes)
{
    return m_editor->moveNextTo(target, LayoutEditor::Before, indexes);
}

QList<QModelIndex> SignalTreeModel::insertIndexesBackward(QModelIndex const& target,
                                                          QList<QModelIndex> const& indexes)
{
    return m_editor->moveNextTo(target, LayoutEditor::After, indexes);
}

QList<QModelIndex> SignalTreeModel::prepend2Parent(QList<QModelIndex> const& indexes,
                                                   QModelIndex const& parent)
{
    return m_editor->moveInto(parent, LayoutEditor::Before, indexes);
}

QList<QModelIndex> SignalTreeModel::append2Parent(QList<QModelIndex> const& indexes,
                                                  QModelIndex const& parent)
{
    return m_editor->moveInto(parent, LayoutEditor::After, indexes);
}

QDomElement SignalTreeModel::save(QDomDocument& document) const
{
    QDomElement window = document.createElement(VEK::DOM_TAG_WINDOW);
    QDomElement trigger = document.createElement(VEK::DOM_TAG_TRIGGER_POSITION);
    trigger.setAttribute(VEK::DOM_ATTR_TRIGGER_SEGMENTS, m_windowsNum);
    trigger.appendChild(document.createTextNode(QString::number(m_triggerPosition)));
    window.appendChild(trigger);
    window.appendChild(saveData(document));
    window.appendChild(saveLayout(document));
    return window;
}

QDomElement SignalTreeModel::saveData(QDomDocument& document) const
{
    return m_store->exportDomElement(document);
}

QDomElement SignalTreeModel::saveLayout(QDomDocument& document) const
{
    return m_layout->exportDomElement(document);
}

void SignalTreeModel::restore(QDomElement const& window)
{
    if (windowIndex(window) != 0) { // a further window
        restoreData(window);
        return;
    }
    clear();
    beginResetModel();
    removeAllRows();
    endResetModel();
    MLog() << "data cleared! signals: " << m_store->elements().size();
    restoreData(window);
    restoreLayout(window.firstChildElement(VEK::DOM_TAG_LAYOUT));
}

/// Within a reset of the model.
void SignalTreeModel::removeAllRows()
{
    m_dataSource->clear();
    m_layout->removeAll();
}

void SignalTreeModel::restoreData(QDomElement const& window)
{
    if (window.tagName() != VEK::DOM_TAG_WINDOW)
        return;
    QDomElement const list = window.firstChildElement(VEK::DOM_TAG_SIGNALS);
    if (windowIndex(window) == 0) {
        m_triggerPosition =
            VEK::elementText(window.firstChildElement(VEK::DOM_TAG_TRIGGER_POSITION)).toInt();
        m_currentTime = m_triggerPosition;
        for (int id : m_store->addSignals(list))
            m_layout->appendSignal(m_store->element(id));
    } else {
        m_store->appendSamples(list);
    }
    post(LayoutChanged);
}

void SignalTreeModel::restoreLayout(QDomElement const& layout)
{
    if (layout.isNull())
        return;
    beginResetModel();
    removeAllRows();
    m_layout->restoreLayout(layout);
    m_dataSource->updateWaveColor();
    endResetModel();
    post(LayoutChanged);
    post(SelectionChanged);
}

} // namespace WaveMonitor
