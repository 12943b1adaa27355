#include "triggerui/matchunitmodel.h"

#include <QColor>

#include <array>

namespace VEK {

namespace {

constexpr int TipColumns = 64;
constexpr int TipRows = 32;

constexpr std::array<char const*, MatchUnitModel::ColumnCount> Headers{
    "Match Unit", "Match Unit", "Trigger Port", "Match Type", "Function", "Counter", "Value"};

QString portText(MatchUnit const& unit)
{
    return unit.trigger ? QStringLiteral("Trigger %1").arg(unit.trigger->index)
                        : QStringLiteral("NONE");
}

QString valueText(MatchUnit const& unit)
{
    bool const range = unit.func == FuncInRange || unit.func == FuncNotInRange;
    return range ? QStringLiteral("%1 : %2").arg(unit.value0, unit.value1) : unit.value0;
}

QString displayText(MatchUnit const& unit, int column)
{
    switch (column) {
    case MatchUnitModel::EnabledColumn:
    case MatchUnitModel::UnitColumn:
        return QStringLiteral("M%1").arg(unit.index);
    case MatchUnitModel::PortColumn:
        return portText(unit);
    case MatchUnitModel::TypeColumn:
        return type2string(unit.matchType);
    case MatchUnitModel::FunctionColumn:
        return func2string(unit.func);
    case MatchUnitModel::CounterColumn:
        return unit.counterEnable ? QString::number(unit.counter) : QStringLiteral("Disabled");
    default:
        return valueText(unit);
    }
}

/// In lines that fit on a screen.
QString wrapped(QString text)
{
    for (int end = TipColumns; end < text.size(); end += TipColumns + 1)
        text.insert(end, QLatin1Char('\n'));
    return text;
}

QString signalsText(TriggerPort const& port)
{
    QStringList names;
    for (SignalItem const& item : port.signalList)
        names << (item.text.isEmpty() ? item.name : item.text);
    if (int const more = names.size() - TipRows; more > 0)
        names = names.mid(0, TipRows) << QStringLiteral("and %1 more").arg(more);
    return names.join(QLatin1Char('\n'));
}

/// For what the table's cells have no room for.
QVariant toolTip(MatchUnit const& unit, int column)
{
    if (column == MatchUnitModel::ValueColumn)
        return wrapped(valueText(unit));
    if (column == MatchUnitModel::PortColumn && unit.trigger)
        return signalsText(*unit.trigger);
    return QVariant();
}

} // namespace

int MatchUnitModel::rowCount(QModelIndex const& parent) const
{
    return parent.isValid() ? 0 : units.size();
}

int MatchUnitModel::columnCount(QModelIndex const& parent) const
{
    return parent.isValid() ? 0 : int(ColumnCount);
}

Qt::ItemFlags MatchUnitModel::flags(QModelIndex const& index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags const common = Qt::ItemIsSelectable | Qt::ItemIsEnabled;
    return index.column() == EnabledColumn ? common | Qt::ItemIsUserCheckable : common;
}

QVariant MatchUnitModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole || section < 0)
        return QVariant();
    if (orientation == Qt::Vertical)
        return QString::number(section);
    return section < ColumnCount ? QVariant(QLatin1String(Headers[std::size_t(section)]))
                                 : QVariant();
}

QVariant MatchUnitModel::data(QModelIndex const& index, int role) const
{
    MatchUnit const* const unit = muFromIndex(index);
    if (!unit)
        return QVariant();
    switch (role) {
    case Qt::DisplayRole:
        return displayText(*unit, index.column());
    case Qt::ToolTipRole:
        return toolTip(*unit, index.column());
    case Qt::TextAlignmentRole:
        return int(Qt::AlignCenter);
    case Qt::ForegroundRole:
        return unit->enabled ? QVariant() : QVariant(QColor(Qt::gray));
    case Qt::CheckStateRole:
        if (index.column() == EnabledColumn)
            return int(unit->enabled ? Qt::Checked : Qt::Unchecked);
        return QVariant();
    default:
        return QVariant();
    }
}

bool MatchUnitModel::setData(QModelIndex const& index, QVariant const& value, int role)
{
    MatchUnit* const unit = muFromIndex(index);
    if (!unit || role != Qt::CheckStateRole || index.column() != EnabledColumn)
        return false;
    unit->enabled = value.toInt() == Qt::Checked;
    updateRow(index.row());
    Q_EMIT modified();
    return true;
}

void MatchUnitModel::setMatcherList(QList<MatchUnit*> const& units)
{
    beginResetModel();
    this->units = units;
    endResetModel();
}

void MatchUnitModel::reset()
{
    setMatcherList({});
}

void MatchUnitModel::updateRow(int row)
{
    if (row >= 0 && row < units.size())
        Q_EMIT dataChanged(index(row, 0), index(row, ColumnCount - 1));
}

MatchUnit* MatchUnitModel::muFromIndex(QModelIndex const& index) const
{
    return index.isValid() ? units.value(index.row(), nullptr) : nullptr;
}

} // namespace VEK
