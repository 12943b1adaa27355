#pragma once

#include "tests/support/tempfolder.h"
#include "wavemonitor/wavemonitorwidget.h"
#include "workbench/mainwindow.h"

/// The workbench as a person uses it: by its menus, its dialogs and its buttons.
struct Window : MainWindow
{
    Window();

    QAction* action(QString const& text) const;
    /// Goes through the menu bar by clicks; what opens then is answered by `answer`.
    void choose(QStringList const& path);
    void press(char const* button);
    /// Clicks the tab of that name, be it of a dock or of a pane.
    void showTab(QString const& text);
    QString messages() const;
    /// Clicks Run and waits for the end of the capture.
    void run();

    WaveMonitor::WaveMonitorWidget* monitor(int core = 0) const;
    /// A row of the wave monitor by its name.
    QModelIndex row(QString const& name) const;
    /// Selects rows and picks from their context menu.
    void chooseForRows(QStringList const& names, QString const& entry);
    /// What the value column says of a row at a sample.
    QString value(QString const& name, int sample) const;
    /// Rows, their order and the buses' members.
    QString arrangement() const;
    QList<QBitArray> samples(int core = 0) const;
    /// Moves the cursor, sets markers, the last one active, and zooms.
    void look(int cursor, QList<int> const& markers, double zoom);
    /// Cursor, the value column's sample, markers and zoom.
    QString view() const;
    /// As the window manager shows it, with the mark of unsaved work.
    QString shownTitle() const;
};

/// Answer the next dialog, behind those that are awaited already.
void answerFile(QString const& path);
void answerNumber(int value);
void answerButton(QString const& text);

/// The configuration of a file, as it would be written.
QString configuration(QString const& path);

/// A test that has its files, settings and sockets in a folder of its own.
class WorkbenchTest : public QObject, protected TempFolder
{
    Q_OBJECT

protected:
    /// A demo's setup in the folder, with its bench in use.
    QString layDemo(QString const& demo) const;
    /// The demo that stalls, on another bench; `more` is appended to its members.
    QString layBench(QByteArray const& more) const;

private slots:
    void initTestCase();
    void cleanup();
    void cleanupTestCase();
};
