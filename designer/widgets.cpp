#include "designer/widgets.h"

#include "programmer/vekprogrammerwidget.h"
#include "triggerui/dynamicconfigwidget.h"
#include "wavemonitor/wavemonitorwidget.h"

#include <QIcon>
#include <QtUiPlugin/QDesignerCustomWidgetInterface>

namespace {

using MakeWidget = QWidget* (*)(QWidget* parent);

/// One widget, by its class name with namespace, its header as a host includes it, and how it is
/// made.
class VekWidget : public QDesignerCustomWidgetInterface
{
public:
    VekWidget(QString const& className, QString const& header, QString const& objectName,
              QString const& toolTip, MakeWidget make)
        : m_className(className), m_header(header), m_objectName(objectName), m_toolTip(toolTip),
          m_make(make)
    {}

    QString name() const override { return m_className; }
    QString group() const override { return QStringLiteral("Vek"); }
    QString toolTip() const override { return m_toolTip; }
    QString whatsThis() const override { return m_toolTip; }
    QString includeFile() const override { return m_header; }
    QIcon icon() const override { return QIcon(); }
    bool isContainer() const override { return false; }
    QWidget* createWidget(QWidget* parent) override { return m_make(parent); }
    QString domXml() const override
    {
        return QStringLiteral("<ui language=\"c++\"><widget class=\"%1\" name=\"%2\"/></ui>")
            .arg(m_className, m_objectName);
    }

private:
    QString m_className;
    QString m_header;
    QString m_objectName;
    QString m_toolTip;
    MakeWidget m_make;
};

template <typename Widget>
QWidget* make(QWidget* parent)
{
    return new Widget(parent);
}

} // namespace

VekWidgets::VekWidgets(QObject* parent) : QObject(parent)
{
    m_widgets << new VekWidget(QStringLiteral("WaveMonitor::WaveMonitorWidget"),
                               QStringLiteral("wavemonitor/wavemonitorwidget.h"),
                               QStringLiteral("waveMonitor"), QStringLiteral("Shows a capture"),
                               make<WaveMonitor::WaveMonitorWidget>)
              << new VekWidget(QStringLiteral("VEK::DynamicConfigWidget"),
                               QStringLiteral("triggerui/dynamicconfigwidget.h"),
                               QStringLiteral("corePanel"), QStringLiteral("Edits a capture core"),
                               make<VEK::DynamicConfigWidget>)
              << new VekWidget(QStringLiteral("VEK::VekProgrammerWidget"),
                               QStringLiteral("programmer/vekprogrammerwidget.h"),
                               QStringLiteral("programmerPanel"),
                               QStringLiteral("Searches the chain and downloads Fs files"),
                               make<VEK::VekProgrammerWidget>);
}

VekWidgets::~VekWidgets()
{
    qDeleteAll(m_widgets);
}
