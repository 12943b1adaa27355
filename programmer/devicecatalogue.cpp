#include "programmer/devicecatalogue.h"

#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QJsonDocument>
#include <QVariantMap>

#include <unistd.h>

namespace VEK {

namespace {

constexpr qint64 LargestFile = 4 * 1024 * 1024; // hundreds of times what devices there are

/// The element whose `field` has that value, or null.
template <typename T>
T* found(QList<T*> const& list, QString T::*field, QString const& value)
{
    for (T* const element : list)
        if (element && element->*field == value)
            return element;
    return nullptr;
}

template <typename T>
QStringList texts(QList<T*> const& list, QString T::*field)
{
    QStringList all;
    for (T* const element : list)
        all << element->*field;
    return all;
}

template <typename T>
QString firstText(QList<T*> const& list, QString T::*field)
{
    return list.isEmpty() ? QString() : list.first()->*field;
}

QString text(QVariantMap const& object, char const* key)
{
    return object.value(QLatin1String(key)).toString();
}

QStringList textList(QVariantMap const& object, char const* key)
{
    return object.value(QLatin1String(key)).toStringList();
}

/// The objects of a list; entries that are none count as empty objects.
QList<QVariantMap> objects(QVariantMap const& object, char const* key)
{
    QList<QVariantMap> all;
    QVariantList const list = object.value(QLatin1String(key)).toList();
    for (QVariant const& entry : list)
        all << entry.toMap();
    return all;
}

QVariantMap readObject(QString const& path)
{
    QFile file(path);
    // a pipe in the file's place would never end
    if (!QFileInfo(path).isFile() || file.size() > LargestFile || !file.open(QIODevice::ReadOnly))
        return {};
    return QJsonDocument::fromJson(file.readAll()).toVariant().toMap();
}

AccessMode* makeAccessMode(QVariantMap const& object)
{
    auto* const mode = new AccessMode;
    mode->name = text(object, "MODE");
    for (QVariantMap const& entry : objects(object, "OPERATIONS")) {
        auto* const operation = new Operation;
        operation->name = text(entry, "OPERATION");
        operation->description = text(entry, "DESCRIPATION");
        operation->cmdIndex = entry.value(QStringLiteral("CMD_INDEX")).toInt();
        operation->options = textList(entry, "OPTIONS");
        operation->accessMode = mode;
        mode->operations << operation;
    }
    return mode;
}

} // namespace

bool Operation::hasProgrammingOption() const
{
    return options.contains(QStringLiteral("Programming"));
}

bool Operation::hasExternalFlashOption() const
{
    return options.contains(QStringLiteral("External Flash"));
}

AccessMode::~AccessMode()
{
    qDeleteAll(operations);
}

Operation* AccessMode::operation(QString const& name) const
{
    return found(operations, &Operation::name, name);
}

QList<Operation*> AccessMode::programmerOperations() const
{
    QList<Operation*> programming;
    for (Operation* const operation : operations)
        if (operation->hasProgrammingOption())
            programming << operation;
    return programming;
}

int AccessMode::indexOfProgramming(Operation* operation) const
{
    return programmerOperations().indexOf(operation);
}

QList<AccessMode*> DeviceModes::accessModesWithProgramming() const
{
    QList<AccessMode*> programming;
    for (AccessMode* const mode : accessModes)
        if (mode && !mode->programmerOperations().isEmpty())
            programming << mode;
    return programming;
}

int DeviceModes::indexOfPrograming(AccessMode* mode) const
{
    return accessModesWithProgramming().indexOf(mode);
}

QStringList Series::devices() const
{
    return texts(deviceList, &DeviceModes::device);
}

QStringList Series::deviceNs() const
{
    QStringList names = texts(deviceList, &DeviceModes::deviceN);
    names.removeDuplicates();
    return names;
}

QString Series::firstDevice() const
{
    return firstText(deviceList, &DeviceModes::device);
}

bool Series::isDeviceTag(QString const& name) const
{
    return found(deviceList, &DeviceModes::device, name) != nullptr;
}

std::unique_ptr<DeviceConfigurations> DeviceConfigurations::m_devCfgsInst;
QString DeviceConfigurations::m_file;

DeviceConfigurations* DeviceConfigurations::instance()
{
    if (!m_devCfgsInst)
        m_devCfgsInst = std::make_unique<DeviceConfigurations>();
    return m_devCfgsInst.get();
}

void DeviceConfigurations::setFile(QString const& path)
{
    m_file = path;
    m_devCfgsInst.reset();
}

DeviceConfigurations::DeviceConfigurations()
{
    loadProgrammerJson();
}

DeviceConfigurations::~DeviceConfigurations()
{
    qDeleteAll(seriesList);
    qDeleteAll(devices);
    qDeleteAll(accessModes);
}

void DeviceConfigurations::loadProgrammerJson()
{
    QVariantMap const file = readObject(
        m_file.isEmpty() ? getExecutablePath() + QStringLiteral("programmer.json") : m_file);

    // each list names entries of the one before
    for (QVariantMap const& object : objects(file, "ALL_MODES"))
        accessModes << makeAccessMode(object);
    QHash<QString, DeviceModes*> byName;
    for (QVariantMap const& object : objects(file, "DEVICE_CONFIG")) {
        auto* const entry = new DeviceModes;
        entry->device = text(object, "DEVICE");
        entry->deviceN = text(object, "DEVICEN");
        entry->deviceNV = text(object, "DEVICENV");
        entry->idCode = text(object, "IDCODE");
        for (QString const& name : textList(object, "ACCESS_MODES"))
            entry->accessModes << accessMode(name);
        devices << entry;
        if (!byName.contains(entry->device))
            byName.insert(entry->device, entry);
    }
    for (QVariantMap const& object : objects(file, "ALL_SERIES")) {
        auto* const entry = new Series;
        entry->name = text(object, "SERIES");
        for (QString const& name : textList(object, "DEVICES")) {
            if (DeviceModes* const device = byName.value(name)) {
                device->series = entry;
                entry->deviceList << device;
            }
        }
        seriesList << entry;
    }
}

QStringList DeviceConfigurations::getSeriesNames() const
{
    return texts(seriesList, &Series::name);
}

QStringList DeviceConfigurations::getDeviceNames() const
{
    return texts(devices, &DeviceModes::device);
}

QStringList DeviceConfigurations::getDevicesNamesByIDCODE(QString const& code) const
{
    QStringList names;
    for (DeviceModes const* const device : devices)
        if (device->idCode == code)
            names << device->device;
    return names;
}

QStringList DeviceConfigurations::getDeviceNVersions(QString const& deviceN) const
{
    QStringList versions;
    for (DeviceModes const* const device : devices)
        if (device->deviceN == deviceN)
            versions << device->deviceNV;
    versions.removeDuplicates();
    versions.removeAll(QString());
    return versions;
}

Series* DeviceConfigurations::series(QString const& name) const
{
    return found(seriesList, &Series::name, name);
}

DeviceModes* DeviceConfigurations::deviceModes(QString const& device) const
{
    return found(devices, &DeviceModes::device, device);
}

AccessMode* DeviceConfigurations::accessMode(QString const& name) const
{
    return found(accessModes, &AccessMode::name, name);
}

QString DeviceConfigurations::unKnownFamily() const
{
    return firstText(seriesList, &Series::name);
}

QString DeviceConfigurations::unKnownDevice() const
{
    return firstText(devices, &DeviceModes::device);
}

QString DeviceConfigurations::unKnownDeviceN() const
{
    return firstText(devices, &DeviceModes::deviceN);
}

QString getExecutablePath()
{
    char buffer[1024];
    ssize_t const length = readlink("/proc/self/exe", buffer, sizeof buffer);
    if (length < 1 || length > 1023)
        return QString();
    QString const path = QFile::decodeName(QByteArray(buffer, int(length)));
    return path.left(path.lastIndexOf(QLatin1Char('/')) + 1);
}

} // namespace VEK
