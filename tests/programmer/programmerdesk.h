#pragma once

#include "tests/support/tempfolder.h"

#include <QStringList>

/// A desk for the simulated programmer: a folder with a bench file, Fs files and the log of what
/// the programmer was told. The shipped catalogue is in use while a desk stands.
class ProgrammerDesk : public TempFolder
{
public:
    ProgrammerDesk();
    ~ProgrammerDesk();

    /// Writes the bench: FT2CH at location 7, WINUSB at 3, a chain of TK-104 and TK-107, and `more`
    /// members of "programmer".
    void lay(QByteArray const& more = QByteArray()) const;
    /// The same with all of the bench. Quotes may be single ones in both.
    void layAll(QByteArray bench) const;

    /// An Fs file for that device, such as "TK-104-Q48".
    QString writeFs(QByteArray const& device, QByteArray const& checksum = "0x1234") const;

    /// The argument lists that the programmer received, oldest first, joined with blanks.
    QStringList log() const;
};
