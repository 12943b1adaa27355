#pragma once

#include <QByteArray>
#include <QString>

namespace VEK::Cli {

/// The text of a configuration that describes no core that was built, with a comment behind its
/// prolog that says so and names the bench, by its way from the folder of `file`, which it is for.
QByteArray markedForRehearsal(QByteArray text, QString const& file, QString const& bench);

/// The bench of such a configuration, or of a session with one. Empty for any other file, and for
/// one that can't be read.
QString rehearsalBench(QString const& file);

} // namespace VEK::Cli
