#pragma once

#include "simulator/patterns.h"

#include <QHash>
#include <QList>
#include <QString>

namespace VEK::Simulator {

/// A cable that is plugged in.
struct BenchCable
{
    QString kind;     ///< "FT2CH", "TR7QZ", "WINUSB" or "LPT".
    int location = 0; ///< Of the cable on its bus.
    QString serial;
};

/// Ways to misbehave, all off by default. Requests count from 1 over the life of the server.
struct Faults
{
    QString of;          ///< Operation or command of the requests that count; empty: all do.
    int delay = 0;       ///< ms that each reply comes late.
    int work = 0;        ///< ms that each reply takes the server, one after the other.
    int silentFrom = 0;  ///< The first request that gets no reply any more; 0: none.
    int garbledFrom = 0; ///< The first request whose reply is no message any more; 0: none.
    int loses = 0;       ///< The one request whose reply is lost; 0: none.
    int shortens = 0;    ///< The one request whose reply has only half of its data; 0: none.
    bool byteByByte = false;
    int together = 1;   ///< Replies that are held and sent at once.
    int closeAfter = 0; ///< The request after which the connection is closed; 0: none.
    int dieAfter = 0;   ///< The request after which the process ends; 0: none.
    bool neverListen = false;
};

/// A device as a scan of the chain reports it.
struct ChainDevice
{
    QString family;
    QString name;
    QString id; ///< Hexadecimal, without the prefix 0x.
};

/// What the simulated programmer finds and how it behaves.
struct LoaderBench
{
    QList<ChainDevice> chain;
    QString bitstream; ///< A file that a download leaves; while it is missing the device is empty.
    QString log;       ///< A file that gets the arguments of each run; may be empty.
    QString output;    ///< A line that is printed last; may be empty.
    int delay = 0;     ///< ms before a run does anything.
    int exitCode = 0;  ///< Other than 0: every run fails with it.
    bool crash = false;
    bool flood = false; ///< Prints without end.
};

/// What is on the desk; docs/simulator.md describes the file.
struct Bench
{
    bool isEmpty = true; ///< There is no bench file at all.
    QString design;      ///< Path of the `.vek` file; empty: the device holds no bitstream.
    QString device;      ///< Empty: there is no device.
    bool listsCables = false;
    QList<BenchCable> cables; ///< Only with `listsCables`; else a cable of any kind is there.
    QString vcd;              ///< Path of the stimulus; empty: `pattern`.
    QString scope;            ///< Of the dump, in front of the names of the design; may be empty.
    QString clock;            ///< Of the dump, for all cores; empty: each core's own.
    QHash<QString, QString> names; ///< From a name of the design to the dump's.
    Pattern pattern;
    bool endless = false; ///< The chip keeps to itself that the stimulus has ended.
    int openResult = 0;   ///< Other than 0: the answer to every OPEN.
    Faults faults;
    LoaderBench loader;
};

/// Reads a bench from the text of its file. Paths in it count from `folder`. False with an `error`
/// for anything that is not as documented, an unknown key too.
bool parseBench(QByteArray const& text, QString const& folder, Bench& bench, QString& error);

/// The same from a file.
bool readBench(QString const& path, Bench& bench, QString& error);

/// The bench file: what VEK_BENCH names, else "bench.json" in `programFolder` if it is there, else
/// empty.
QString findBench(QString const& programFolder);

} // namespace VEK::Simulator
