#pragma once

#include <QDialog>
#include <QPointer>

/// A small busy indicator on top of a window. There is at most one in a process.
class WaitingTip : public QDialog
{
    Q_OBJECT

public:
    /// Does nothing while there is one. `parent` may be null; a tip that its parent took along is
    /// forgotten.
    static void showWaiting(QWidget* parent);

    /// Ends the tip, if there is one. Also safe in answer to `KeyPress`.
    static void hideWaiting();

    QSize sizeHint() const override;

Q_SIGNALS:
    /// "F3" or "F4".
    void KeyPress(QString key);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    explicit WaitingTip(QWidget* parent);

    static QPointer<WaitingTip> m_instance;
};
