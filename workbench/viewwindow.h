#pragma once

#include "cli/capturefile.h"

#include <QList>
#include <QMainWindow>

class CapturePane;
class QLabel;
class QSplitter;

/// The window of the viewer: captures from files, one above the other.
class ViewWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit ViewWindow(VEK::Cli::CaptureHints const& hints);

    /// Adds the capture of a file. False with an error, which names the file, when it can't be
    /// read.
    bool open(QString const& path, QString& error);

    QList<CapturePane*> panes() const;
    /// All panes without menu and status bar, for a picture.
    QWidget* content() const;

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void makeMenus();
    void choose();
    void openAll(QStringList const& paths);
    void closeAll();
    void updateTitle();

    VEK::Cli::CaptureHints m_hints;
    QSplitter* m_panes;
    QLabel* m_hint;
};
