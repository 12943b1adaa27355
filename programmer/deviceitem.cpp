#include "programmer/deviceitem.h"

namespace VEK {

DeviceItem::DeviceItem()
    : series(DeviceConfigurations::instance()->unKnownFamily()),
      device(DeviceConfigurations::instance()->unKnownDevice()),
      deviceN(DeviceConfigurations::instance()->unKnownDeviceN())
{}

DeviceItem::DeviceItem(QString const& device) : device(device), idCode()
{}

void DeviceItem::setDevice(QString const& name)
{
    DeviceConfigurations const* const catalogue = DeviceConfigurations::instance();
    DeviceModes const* const entry = catalogue->deviceModes(name);
    device = entry ? name : catalogue->unKnownDevice();
    deviceN = entry ? entry->deviceN : catalogue->unKnownDeviceN();
    if (entry)
        deviceNV = entry->deviceNV;
    series = !entry ? catalogue->unKnownFamily() : entry->series ? entry->series->name : QString();
}

bool DeviceItem::isValid() const
{
    Series const* const entry = DeviceConfigurations::instance()->series(series);
    return entry && entry->isDeviceTag(device);
}

} // namespace VEK
