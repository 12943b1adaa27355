#include <QBuffer>
#include <QPluginLoader>
#include <QTest>
#include <QUiLoader>
#include <QWidget>

/// The plugin as Qt Designer loads it, and a form that was made with it.
class TestDesigner : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void formWithTheWidgets();
};

void TestDesigner::formWithTheWidgets()
{
    QUiLoader loader;
    loader.addPluginPath(VEK_BUILD_ROOT "/plugins/designer");
    QByteArray form("<ui version=\"4.0\"><widget class=\"QWidget\" name=\"form\">");
    QStringList const classes{"WaveMonitor::WaveMonitorWidget", "VEK::DynamicConfigWidget",
                              "VEK::VekProgrammerWidget"};
    for (QString const& name : classes) {
        QVERIFY2(loader.availableWidgets().contains(name), qPrintable(name));
        form += QString("<widget class=\"%1\" name=\"a\"/><widget class=\"%1\" name=\"b\"/>")
                    .arg(name)
                    .toUtf8();
    }
    form += "</widget></ui>";
    QBuffer buffer(&form);
    QScopedPointer<QWidget> const window(loader.load(&buffer));
    QVERIFY2(window, qPrintable(loader.errorString()));
    QStringList found;
    QList<qulonglong> domains;
    for (QObject const* const child : window->children()) {
        found << child->metaObject()->className();
        if (child->property("domain").isValid())
            domains << child->property("domain").toULongLong();
    }
    for (QString const& name : classes)
        QCOMPARE(found.count(name), 2);
    QCOMPARE(domains.size(), 2); // two monitors of one form must not hear each other
    QVERIFY(domains.at(0) != domains.at(1));
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window.data()));
}

QTEST_MAIN(TestDesigner)
#include "tst_designer.moc"
