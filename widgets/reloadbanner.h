#pragma once

#include <QString>
#include <QWidget>

namespace VEK {

/// A row that tells of a configuration file that changed or went away on disk, with one button for
/// what to do about it. The host places it and acts on the signals.
class ReloadBanner : public QWidget
{
    Q_OBJECT

public:
    enum CheckType { Changed = 0, Removed = 1 };

    /// `fileName` is shown as it stands, or without its beginning where there is no room for it.
    ReloadBanner(CheckType type, QString fileName, QWidget* parent);

Q_SIGNALS:
    /// The button of a changed file.
    void reload();
    /// The button of a removed file.
    void closeIt();
    /// For hosts; never emitted here.
    void cancel();
    void keepIt();
};

} // namespace VEK
