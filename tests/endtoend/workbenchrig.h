#pragma once

#include "wavemonitor/wavemonitorwidget.h"
#include "workbench/mainwindow.h"

#include <QTimer>

#include <functional>

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
    /// What the value column says, by the names of the rows, with the cursor at a sample.
    QMap<QString, QString> valuesAt(int sample) const;
    /// Rows, their order and the buses' members.
    QString arrangement() const;
    QList<QBitArray> samples(int core = 0) const;
};

/// Answers the next dialogs, one after the other, as they open. All must have opened in its
/// lifetime.
class Answers
{
public:
    using Answer = std::function<void(QWidget*)>;

    explicit Answers(QList<Answer> answers);
    ~Answers();

    static Answer file(QString const& path);
    static Answer number(int value);
    static Answer button(QString const& text);

private:
    void next();

    QList<Answer> m_answers;
    QTimer m_timer;
    QWidget* m_last = nullptr;
};
