#pragma once

#include <QtGlobal>

namespace WaveMonitor {

/// Mixed into every participant of the notification hub: the domain tells several monitors of one
/// process apart. A notification whose sender has another domain is ignored. Participants export it
/// as the Qt property "domain".
class Localized
{
public:
    quint64 domain() const { return m_domain; }
    void setDomain(quint64 const& domain) { m_domain = domain; }

private:
    quint64 m_domain = 0;
};

} // namespace WaveMonitor
