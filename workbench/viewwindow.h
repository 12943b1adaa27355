#pragma once

#include "cli/exitstatus.h"
#include "workbench/capturepane.h"

#include <QMainWindow>

class CaptureArea;
class QLabel;

/// The window of the viewer.
class ViewWindow : public QMainWindow
{
    Q_OBJECT

public:
    /// The hints hold for all files.
    explicit ViewWindow(VEK::Cli::CaptureHints hints);

    /// Opens captures behind those that are open. What could not be read is told in the window.
    void open(QStringList const& files);

    /// Of all captures.
    void showRange(SampleRange const& range);

    /// The status of the first failure while nothing could be opened, else that all went well.
    VEK::Cli::Status status() const { return m_status; }

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void makeCentre();
    void makeMenus();
    void openOne(QStringList const& files, QStringList& told);
    void chooseFiles();
    void chooseClock();
    void savePicture();
    void reload();
    void tell(QStringList const& messages);
    void update();

    VEK::Cli::CaptureHints m_hints;
    VEK::Cli::Status m_status = VEK::Cli::Status::Done;
    bool m_hasOpened = false;
    QString m_folder; ///< Of the files that were opened last.
    CaptureArea* m_area = nullptr;
    QLabel* m_empty = nullptr;
    QLabel* m_messages = nullptr;
    QList<QAction*> m_captureActions; ///< Those that need a capture.
};
