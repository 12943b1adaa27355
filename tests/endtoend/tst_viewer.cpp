#include "tests/support/tempfolder.h"
#include "wavemonitor/signaltreemodel.h"
#include "wavemonitor/wavemonitorwidget.h"
#include "workbench/capturearea.h"
#include "workbench/viewwindow.h"

#include <QAction>
#include <QDropEvent>
#include <QLabel>
#include <QMimeData>
#include <QToolButton>
#include <QUrl>
#include <QtTest>

using VEK::Cli::Status;

class TestViewer : public QObject
{
    Q_OBJECT

private slots:
    void opensTellsAndCloses();

private:
    static void choose(QWidget& window, QString const& text)
    {
        for (auto* const action : window.findChildren<QAction*>())
            if (action->text() == text && action->isEnabled())
                return action->trigger();
        QFAIL(qPrintable(text));
    }
};

void TestViewer::opensTellsAndCloses()
{
    TempFolder const folder;
    auto const path = [&](QString const& name) { return folder.path(name); };
    folder.write("a.csv", "sample,a\n0,0\n1,1\n2,0\n");
    folder.write("broken.csv", "nothing\n");
    ViewWindow window({});
    window.show();
    auto* const messages = window.findChild<QLabel*>("messages");
    auto* const area = window.findChild<CaptureArea*>();
    window.open({path("broken.csv")});
    QVERIFY(messages->isVisible() && messages->text().contains("broken.csv"));
    QCOMPARE(window.status(), Status::Configuration);

    window.open({path("a.csv"), path("broken.csv")});
    QVERIFY(messages->text().contains("broken.csv"));
    QCOMPARE(window.status(), Status::Done);
    QCOMPARE(area->panes().size(), 1);
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(path("b.csv")), QUrl("http://localhost/c.csv")});
    folder.write("b.csv", "sample,b\n0,0\n1,1\n");
    QDragEnterEvent enter(QPoint(), Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(&window, &enter); // which makes it the target
    QVERIFY(enter.isAccepted());
    QDropEvent drop(QPointF(), Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(&window, &drop);
    QVERIFY(!messages->isVisible());
    QVERIFY(window.windowTitle().startsWith("a.csv, b.csv"));

    folder.write("a.csv", "sample,a\n0,0\n1,1\n2,0\n3,1\n4,0\n");
    choose(window, "&Reload");
    QTRY_COMPARE(area->panes().size(), 2);
    QCOMPARE(area->panes().first()->monitor()->model()->timeLength(), 5);
    choose(window, "&Side by Side");
    QCOMPARE(area->orientation(), Qt::Horizontal);
    for (int left = 1; left >= 0; --left) {
        QTest::mouseClick(area->panes().first()->findChild<QToolButton*>(), Qt::LeftButton);
        QTRY_COMPARE(area->panes().size(), left);
    }
    QTRY_VERIFY(!area->isVisible());
}

QTEST_MAIN(TestViewer)
#include "tst_viewer.moc"
