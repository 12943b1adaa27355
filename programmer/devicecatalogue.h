#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <memory>

/// What devices exist, how each can be accessed, and what can be done with it. All of it comes from
/// the data file "programmer.json"; plain objects, used on the main thread.
namespace VEK {

struct AccessMode;
struct Series;

/// Something that the command-line programmer does with a device.
struct Operation
{
    /// Whether it loads an Fs file.
    bool hasProgrammingOption() const;
    bool hasExternalFlashOption() const;

    int cmdIndex = 0;                 ///< The programmer's "--operation_index".
    AccessMode* accessMode = nullptr; ///< The owning mode.
    QString name;
    QString description; ///< Shown to the user.
    QStringList options; ///< Tags.
};

/// A way to access a device, with its operations, which it owns.
struct AccessMode
{
    AccessMode() = default;
    ~AccessMode();
    Q_DISABLE_COPY(AccessMode)

    /// The operation of that name, or null.
    Operation* operation(QString const& name) const;
    /// Those that load an Fs file, in order.
    QList<Operation*> programmerOperations() const;
    /// Place in `programmerOperations()`, or -1.
    int indexOfProgramming(Operation* operation) const;

    QString name;
    QList<Operation*> operations;
};

/// A device. Several may share an ID code.
struct DeviceModes
{
    /// Those of `accessModes` that can load an Fs file, in order.
    QList<AccessMode*> accessModesWithProgramming() const;
    /// Place in `accessModesWithProgramming()`, or -1.
    int indexOfPrograming(AccessMode* mode) const;

    QString device;                 ///< Name, such as TK-107.
    QString deviceN;                ///< Package group.
    QString deviceNV;               ///< Version.
    QString idCode;                 ///< Hexadecimal, without the prefix 0x.
    Series* series = nullptr;       ///< Not owned; null for a device that no series names.
    QList<AccessMode*> accessModes; ///< Not owned; null for a name that the file does not define.
};

/// A chip series. The devices are not owned.
struct Series
{
    /// The names of the devices, in order.
    QStringList devices() const;
    /// Their package groups, in order, each once.
    QStringList deviceNs() const;
    /// Name of the first device; empty without devices.
    QString firstDevice() const;
    bool isDeviceTag(QString const& name) const;

    QString name;
    QList<DeviceModes*> deviceList;
};

/// The catalogue. It owns its lists. A file that is missing or broken gives empty lists and no
/// message, and what is unknown in it is passed over; look-ups of a first entry then give empty
/// texts.
class DeviceConfigurations
{
public:
    /// The catalogue beside the program's executable, read on first use.
    static DeviceConfigurations* instance();

    /// Reads another file from the next `instance` on; an empty path goes back to the file beside
    /// the executable. All that the present catalogue gave away becomes invalid. For tests.
    static void setFile(QString const& path);

    DeviceConfigurations();
    ~DeviceConfigurations();
    Q_DISABLE_COPY(DeviceConfigurations)

    void loadProgrammerJson();

    QStringList getSeriesNames() const;
    QStringList getDeviceNames() const;
    /// Names of all devices with that ID code, in file order.
    QStringList getDevicesNamesByIDCODE(QString const& code) const;
    /// Versions of a package group, in file order, each once, without empty ones.
    QStringList getDeviceNVersions(QString const& deviceN) const;

    /// By name, or null.
    Series* series(QString const& name) const;
    DeviceModes* deviceModes(QString const& device) const;
    AccessMode* accessMode(QString const& name) const;

    /// The first of the catalogue, for what a scan reports and the catalogue lacks.
    QString unKnownFamily() const;
    QString unKnownDevice() const;
    QString unKnownDeviceN() const;

    QList<AccessMode*> accessModes;
    QList<DeviceModes*> devices;
    QList<Series*> seriesList;

private:
    static std::unique_ptr<DeviceConfigurations> m_devCfgsInst;
    static QString m_file;
};

/// Folder of the running program with a slash at its end; empty when the system does not tell.
QString getExecutablePath();

} // namespace VEK
