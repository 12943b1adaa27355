#include "programmer/vekprogrammermodel.h"

#include "model/alert.h"
#include "programmer/deviceselector.h"
#include "programmer/programmerprocess.h"

#include <QApplication>
#include <QFileSystemWatcher>
#include <QPointer>

#include <algorithm>
#include <array>

namespace VEK {

namespace {

constexpr int MostDevices = 17;
constexpr int DefaultIrCode = 8;
QString const UnknownIdCode = QStringLiteral("00000000");

constexpr std::array<char const*, VekProgrammerModel::ColumnCount> Headers{
    "Enable",  "Series",   "Device",    "Device Version", "Operation",
    "Fs File", "Checksum", "User Code", "ID Code",        "IRCode"};

bool refuse(QString const& text)
{
    showAlert({AlertKind::Critical, QStringLiteral("Error"), text});
    return false;
}

} // namespace

VekProgrammerModel::VekProgrammerModel(QObject* parent)
    : QAbstractTableModel(parent), m_process(new ProgrammerProcess(this)),
      m_watcher(new QFileSystemWatcher(this))
{
    qRegisterMetaType<ProgrammerStatus>("ProgrammerStatus");
    connect(m_process, &ProgrammerProcess::failed, this, &VekProgrammerModel::onProgramError);
    // queued: the answer runs the event loop, where the watcher may go with this object
    connect(m_watcher, &QFileSystemWatcher::fileChanged, this, &VekProgrammerModel::onFileChanged,
            Qt::QueuedConnection);
    connect(m_watcher, &QFileSystemWatcher::directoryChanged, this,
            &VekProgrammerModel::compareFiles, Qt::QueuedConnection);
}

VekProgrammerModel::~VekProgrammerModel()
{
    delete m_process; // before the rows, which its end must not look at
    qDeleteAll(m_rows);
}

void VekProgrammerModel::setProgrammer(QString const& path)
{
    m_process->setProgram(path);
}

int VekProgrammerModel::rowCount(QModelIndex const& parent) const
{
    return parent.isValid() ? 0 : m_rows.size();
}

int VekProgrammerModel::columnCount(QModelIndex const& parent) const
{
    return parent.isValid() ? 0 : int(ColumnCount);
}

Qt::ItemFlags VekProgrammerModel::flags(QModelIndex const& index) const
{
    DeviceItem const* const row = device(index);
    if (!row)
        return Qt::NoItemFlags;
    Qt::ItemFlags const common = Qt::ItemIsSelectable | Qt::ItemIsEnabled;
    bool const known = row->known == 1;
    switch (index.column()) {
    case EnableColumn:
        return known ? Qt::ItemIsUserCheckable | Qt::ItemIsEnabled : common;
    case SeriesColumn:
    case DeviceColumn:
    case VersionColumn:
        return common | Qt::ItemIsEditable;
    case FsFileColumn:
        return known ? common | Qt::ItemIsEditable : common;
    case IrCodeColumn:
        return row->known == 0 ? common | Qt::ItemIsEditable : common;
    default:
        return common;
    }
}

QVariant VekProgrammerModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole || orientation != Qt::Horizontal || section < 0 ||
        section >= ColumnCount)
        return QAbstractTableModel::headerData(section, orientation, role);
    return QLatin1String(Headers[std::size_t(section)]);
}

QVariant VekProgrammerModel::data(QModelIndex const& index, int role) const
{
    DeviceItem const* const row = device(index);
    if (!row)
        return QVariant();
    if (role == Qt::DisplayRole || role == Qt::EditRole)
        return text(*row, index.column());
    if (role == Qt::CheckStateRole && index.column() == EnableColumn)
        return int(row->enable ? Qt::Checked : Qt::Unchecked);
    return QVariant();
}

QVariant VekProgrammerModel::text(DeviceItem const& row, int column) const
{
    switch (column) {
    case SeriesColumn:
        return row.series;
    case DeviceColumn:
        return row.deviceN;
    case VersionColumn:
        return row.deviceNV;
    case OperationColumn:
        return row.operation ? row.operation->description : QStringLiteral("Bypass");
    case FsFileColumn:
        return row.fsFile;
    case ChecksumColumn:
        return row.checksum;
    case UserCodeColumn:
        return row.userCode;
    case IdCodeColumn:
        return row.idCode;
    case IrCodeColumn:
        return row.irCode;
    default:
        return QVariant();
    }
}

bool VekProgrammerModel::setData(QModelIndex const& index, QVariant const& value, int role)
{
    DeviceItem* const row = device(index);
    int const column = index.column();
    if (!row || role != (column == EnableColumn ? Qt::CheckStateRole : Qt::EditRole))
        return false;
    switch (column) {
    case EnableColumn:
        row->enable = value.toInt() != Qt::Unchecked;
        break;
    case SeriesColumn:
        setSeries(row, value.toString());
        break;
    case DeviceColumn:
        setDevice(row, value.toString());
        break;
    case VersionColumn:
        setVersion(row, value.toString());
        break;
    case FsFileColumn:
        readFsFile(value.toString(), row);
        break;
    case ChecksumColumn:
        row->checksum = value.toString();
        break;
    case UserCodeColumn:
        row->userCode = value.toString();
        break;
    case IdCodeColumn:
        row->idCode = value.toString();
        break;
    case IrCodeColumn:
        row->irCode = value.toInt();
        break;
    default:
        return false;
    }
    int const number = index.row();
    Q_EMIT dataChanged(this->index(number, 0), this->index(number, ColumnCount - 1));
    if (column == SeriesColumn || column == DeviceColumn || column == VersionColumn)
        Q_EMIT deviceChanged();
    if (column == SeriesColumn || column == FsFileColumn)
        updateWatcherFsFiles();
    return true;
}

void VekProgrammerModel::setSeries(DeviceItem* row, QString const& name)
{
    Series const* const series = DeviceConfigurations::instance()->series(name);
    row->series = name;
    row->known = series ? 1 : 0;
    row->irCode = DefaultIrCode;
    row->fsFile.clear();
    if (series && !series->deviceList.isEmpty()) {
        row->setDevice(series->firstDevice());
        row->series = name;
        updateOperation(row);
    } else {
        row->idCode = UnknownIdCode;
        row->operation = nullptr;
    }
}

/// `name` is a package group or a device. Several devices may share a group: the row keeps its
/// device when that belongs to the group, and takes the group's first otherwise.
void VekProgrammerModel::setDevice(DeviceItem* row, QString const& name)
{
    DeviceConfigurations const* const catalogue = DeviceConfigurations::instance();
    Series const* const series = catalogue->series(row->series);
    DeviceModes const* chosen = nullptr;
    for (DeviceModes const* const entry : series ? series->deviceList : QList<DeviceModes*>()) {
        bool const fits = entry->deviceN == name || entry->device == name;
        if (fits && (!chosen || entry->device == row->device))
            chosen = entry;
    }
    if (chosen) {
        row->setDevice(chosen->device);
        row->series = series->name;
    } else {
        row->setDevice(catalogue->unKnownDevice());
        row->idCode = UnknownIdCode;
    }
    updateOperation(row);
}

/// Takes the catalogue's entry of the row's package group in that version, with the operation if it
/// has that too. A version that the catalogue lacks is only noted.
void VekProgrammerModel::setVersion(DeviceItem* row, QString const& version)
{
    row->deviceNV = version;
    for (DeviceModes const* const entry : qAsConst(DeviceConfigurations::instance()->devices)) {
        if (entry->deviceN != row->deviceN || entry->deviceNV != version)
            continue;
        row->setDevice(entry->device);
        if (!row->operation || !entry->accessModes.contains(row->operation->accessMode))
            updateOperation(row);
        return;
    }
}

void VekProgrammerModel::initData(QString const& series, QString const& device,
                                  QString const& fsFile)
{
    DeviceConfigurations const* const catalogue = DeviceConfigurations::instance();
    auto* const row = new DeviceItem;
    row->known = 1;
    Series const* const known = catalogue->series(series);
    if (catalogue->deviceModes(device))
        row->setDevice(device);
    else if (known && !known->deviceList.isEmpty())
        row->setDevice(known->firstDevice());
    if (known)
        row->series = series;
    readFsFile(fsFile, row);
    updateOperation(row);
    replaceRows({row});
    updateWatcherFsFiles();
}

void VekProgrammerModel::updateFsFile(QString const& file)
{
    auto* const row = new DeviceItem;
    row->known = 1;
    DeviceItem const* const former = activeDevice() ? activeDevice() : m_rows.value(0, nullptr);
    if (former) {
        row->setDevice(former->device);
        row->series = former->series;
        row->deviceNV = former->deviceNV;
        row->enable = former->enable;
    }
    readFsFile(file, row);
    updateOperation(row);
    replaceRows({row});
    QPointer<VekProgrammerModel> const self(this);
    updateWatcherFsFiles();
    if (self)
        Q_EMIT statusChanged(ProgrammerIdle, {});
}

DeviceItem* VekProgrammerModel::activeDevice() const
{
    for (DeviceItem* const row : m_rows)
        if (row->enable)
            return row;
    return nullptr;
}

DeviceItem* VekProgrammerModel::device(QModelIndex const& index) const
{
    return index.isValid() ? m_rows.value(index.row(), nullptr) : nullptr;
}

bool VekProgrammerModel::validate() const
{
    if (m_rows.isEmpty())
        return refuse(QStringLiteral("No available device."));
    for (int i = 0; i < m_rows.size(); ++i)
        if (m_rows[i]->known != 1 && m_rows[i]->irCode < 1)
            return refuse(QStringLiteral("Device (%1) has wrong IRCode.").arg(i + 1));
    return checkSingleTarget() && (activeDevice() || refuse(QStringLiteral("No target device.")));
}

bool VekProgrammerModel::checkSingleTarget() const
{
    auto const isTarget = [](DeviceItem const* row) { return row->enable != 0; };
    return std::count_if(m_rows.begin(), m_rows.end(), isTarget) < 2 ||
           refuse(QStringLiteral("Only one device can be set as target device."));
}

void VekProgrammerModel::selectDevice(DeviceItem* row)
{
    QStringList const names =
        DeviceConfigurations::instance()->getDevicesNamesByIDCODE(row->idCode);
    if (names.size() == 1) {
        row->setDevice(names.first());
    } else if (names.size() > 1) {
        auto* const selector = new DeviceSelector(row, names, QApplication::activeWindow());
        selector->setAttribute(Qt::WA_DeleteOnClose); // its parent may go first
        selector->exec();
    }
}

void VekProgrammerModel::updateOperation(DeviceItem* row)
{
    row->operation = nullptr;
    DeviceModes const* const entry = DeviceConfigurations::instance()->deviceModes(row->device);
    QList<AccessMode*> const modes =
        entry ? entry->accessModesWithProgramming() : QList<AccessMode*>();
    if (!modes.isEmpty())
        row->operation = modes.first()->programmerOperations().first();
}

void VekProgrammerModel::replaceRows(QList<DeviceItem*> const& rows)
{
    beginResetModel();
    qDeleteAll(m_rows);
    m_rows = rows;
    endResetModel();
    Q_EMIT deviceChanged();
}

void VekProgrammerModel::onAddNewDevice()
{
    if (m_rows.size() >= MostDevices) {
        showAlert({AlertKind::Warning, QStringLiteral("Warning"),
                   QStringLiteral("Exceeding the maximum number of devices.")});
        return;
    }
    beginResetModel();
    m_rows << new DeviceItem;
    endResetModel();
    Q_EMIT deviceChanged();
}

void VekProgrammerModel::onRemoveDevice(QModelIndex const& index)
{
    if (!device(index))
        return;
    beginResetModel();
    delete m_rows.takeAt(index.row());
    endResetModel();
    Q_EMIT deviceChanged();
    updateWatcherFsFiles();
}

void VekProgrammerModel::swapRows(int a, int b)
{
    if (a < 0 || b < 0 || a >= m_rows.size() || b >= m_rows.size())
        return;
    beginResetModel();
    m_rows.swapItemsAt(a, b);
    endResetModel();
}

void VekProgrammerModel::onMoveUp(QModelIndex const& index)
{
    if (index.isValid())
        swapRows(index.row(), index.row() - 1);
}

void VekProgrammerModel::onMoveDown(QModelIndex const& index)
{
    if (index.isValid())
        swapRows(index.row(), index.row() + 1);
}

} // namespace VEK
