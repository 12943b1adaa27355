#pragma once

#include <QList>
#include <QString>

namespace VEK {

/// How much a finding matters.
enum class Severity {
    Error,  ///< A capture is not what the file says, or there can't be one.
    Warning ///< The file is read as it was meant, as far as one can tell, or the result surprises.
};

/// Something that the readers put up with.
struct Finding
{
    Severity severity = Severity::Error;
    int line = 0;      ///< Of the element, from 1; 0 for the file as a whole.
    QString element;   ///< Tag name; empty for the file as a whole.
    QString attribute; ///< Empty for the element as a whole.
    QString message;   ///< One sentence without a full stop.

    /// "MatchUnit, value0: ...", without the line.
    QString text() const;
};

} // namespace VEK
