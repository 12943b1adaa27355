// The item model: rows, texts and values.

#include "wavemonitor/signaltreemodel.h"

#include "wavemonitor/constants.h"
#include "wavemonitor/notificationcenter.h"
#include "wavemonitor/tree/modellayout.h"
#include "wavemonitor/waves/waveviewdatasource.h"

#include <QSize>
#include <QTreeView>

namespace WaveMonitor {

namespace {

constexpr QRgb MemberBackground = 0xdddddd;

bool hasSample(SignalElement const* element, int time)
{
    return element && time >= 0 && time < element->data.size();
}

QVariant background(LayoutNode const* node)
{
    if (node->type == LayoutNode::Divider)
        return QColor(QRgb(node->color));
    return node->parent->type == LayoutNode::Root ? QColor(Qt::white)
                                                  : QColor(QRgb(MemberBackground));
}

QVariant sizeHint(LayoutNode const* node)
{
    if (node->type != LayoutNode::Bus)
        return QVariant();
    bool const chart = isChart(node->formatter->formatType()) && !node->children.isEmpty();
    return QSize(0, chart ? node->formatter->rowHeight() : Constants::Graphics::kRowHeight);
}

} // namespace

SignalTreeModel::SignalTreeModel(QObject* parent)
    : QAbstractItemModel(parent), m_layout(std::make_unique<ModelLayout>(this)),
      m_dataSource(std::make_unique<WaveViewDataSource>(m_layout.get(), this))
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
    qDeleteAll(m_elements);
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

bool SignalTreeModel::isOwn(QModelIndex const& index) const
{
    return index.isValid() && index.model() == this;
}

int SignalTreeModel::columnCount(QModelIndex const&) const
{
    return ColumnCount;
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

Qt::DropActions SignalTreeModel::supportedDropActions() const
{
    return Qt::CopyAction | Qt::MoveAction;
}

Qt::DropActions SignalTreeModel::supportedDragActions() const
{
    return Qt::CopyAction | Qt::MoveAction;
}

QVariant SignalTreeModel::data(QModelIndex const& index, int role) const
{
    if (!isOwn(index))
        return QVariant();
    LayoutNode const* const node = m_layout->nodeAt(index);
    bool const name = index.column() == NameColumn;
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return name ? m_layout->displayText(node) : valueText(node);
    case Qt::FontRole:
        return name ? nameFont(node) : QVariant();
    case Qt::BackgroundRole:
        return background(node);
    case Qt::SizeHintRole:
        return sizeHint(node);
    default:
        return QVariant();
    }
}

QVariant SignalTreeModel::nameFont(LayoutNode const* node) const
{
    bool renamed = false;
    if (node->type == LayoutNode::Bus) {
        renamed = !static_cast<BusLayoutNode const*>(node)->text.isEmpty();
    } else if (node->type == LayoutNode::Signal) {
        SignalElement const* const element = signalElementByID(node->id);
        renamed = !static_cast<SignalLayoutNode const*>(node)->text.isEmpty() ||
                  (element && !element->text.isEmpty());
    }
    QFont font;
    if (renamed && node->nameType != LayoutNode::ShortName)
        font.setItalic(true);
    return font;
}

QString SignalTreeModel::valueText(LayoutNode const* node) const
{
    if (node->type == LayoutNode::Signal) {
        SignalElement const* const element = m_elements.value(node->id);
        if (!element)
            return QString();
        return node->formatter->format(hasSample(element, m_currentTime)
                                           ? QBitArray(1, element->data.testBit(m_currentTime))
                                           : QBitArray());
    }
    if (node->type == LayoutNode::Bus)
        return node->formatter->format(busValue(node));
    return QStringLiteral("");
}

/// One bit a member; a null array where the first member has no sample.
QBitArray SignalTreeModel::busValue(LayoutNode const* bus) const
{
    QBitArray value(bus->children.size());
    int width = 0;
    for (LayoutNode const* child : bus->children) {
        if (child->type == LayoutNode::Divider)
            continue;
        SignalElement const* const element = m_elements.value(child->id);
        bool const sampled = hasSample(element, m_currentTime);
        if (width == 0 && !sampled)
            return QBitArray();
        value.setBit(width++, sampled && element->data.testBit(m_currentTime));
    }
    value.truncate(width);
    return width > 0 ? value : QBitArray();
}

bool SignalTreeModel::setData(QModelIndex const& index, QVariant const& value, int role)
{
    QString const text = value.toString();
    if (role != Qt::EditRole || !isOwn(index) || index.column() != NameColumn || text.isEmpty())
        return false;
    LayoutNode* const node = m_layout->nodeAt(index);
    QString const before = m_layout->displayText(node);
    if (node->type == LayoutNode::Bus) {
        auto* bus = static_cast<BusLayoutNode*>(node);
        bus->text = text == bus->name ? QString() : text;
    } else if (node->type == LayoutNode::Signal) {
        static_cast<SignalLayoutNode*>(node)->text = text;
    } else {
        static_cast<DividerLayoutNode*>(node)->text = text;
    }
    if (text != before)
        Q_EMIT layoutEdited();
    return true;
}

} // namespace WaveMonitor
