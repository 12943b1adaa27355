#pragma once

#include <QMap>
#include <QString>
#include <QStringList>
#include <QVector>

/// Setups as a `.vek` file says them, made without the product's model.
namespace Setup {

/// A core, its parts as the elements of the file.
struct Core
{
    int amount = 128;
    int position = 0;
    int windows = 1;
    bool dynamic = false;
    bool initial = false; ///< Captures its initial data.
    QString entries;
    QMap<int, QString> ports;
    QString units;
    QStringList expressions{"M0"};
};

/// A signal, or with a width a bus of the signals name[width-1] to name[0]. `attributes` are any
/// but the name that is kept.
QString entry(QString const& name, int width = 0, QString const& attributes = QString());

/// A match unit; `more` are attributes besides these three.
QString unit(int index, int port, QString const& value, QString const& more = "func='0'");

/// The text of a Standard file. A core's place is its index, its clock is "clk".
QByteArray vek(QVector<Core> const& cores);

/// A setup for many replies: two cores that capture "count[9]" to "count[0]" in sections, the
/// first one in two windows, the second one dynamic.
QByteArray twoCores();

/// The text of a Lite file with one core, on clock "clk".
QByteArray lite(int amount, int implemention, bool initial, QString const& entries);

} // namespace Setup
