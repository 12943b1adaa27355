#include "simulator/loader.h"

#include "simulator/cables.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QThread>

#include <cstdlib>

namespace VEK::Simulator {

namespace {

/// What the arguments ask for.
struct Request
{
    bool isValid = true;
    bool scansCables = false;
    bool onlyWinUsb = false;
    bool scansDevices = false;
    QHash<QString, QString> values; ///< By option, without its dashes.

    int number(char const* option) const { return values.value(QLatin1String(option)).toInt(); }
    bool has(char const* option) const { return values.contains(QLatin1String(option)); }
};

Request parse(QStringList arguments)
{
    static QStringList const options{
        QStringLiteral("--device"),          QStringLiteral("--fsFile"),
        QStringLiteral("--operation_index"), QStringLiteral("--cable-index"),
        QStringLiteral("--location"),        QStringLiteral("--frequency"),
        QStringLiteral("--chain_size"),      QStringLiteral("--chain_index"),
        QStringLiteral("--chain_ir"),        QStringLiteral("--nlc")};
    Request request;
    while (!arguments.isEmpty()) {
        QString const option = arguments.takeFirst();
        if (option == QLatin1String("--scan-cables")) {
            request.scansCables = true;
            request.onlyWinUsb = arguments.value(0) == QLatin1String("L");
            if (request.onlyWinUsb)
                arguments.removeFirst();
        } else if (option == QLatin1String("--scan")) {
            request.scansDevices = true;
        } else if (options.contains(option) && !arguments.isEmpty()) {
            request.values.insert(option.mid(2), arguments.takeFirst());
        } else {
            request.isValid = false;
            break;
        }
    }
    return request;
}

/// The kind of the programmer's number of a cable.
QString kindOfNumber(int number)
{
    switch (number) {
    case 0:
        return QStringLiteral("TR7QZ");
    case 1:
        return QStringLiteral("FT2CH");
    case 2:
        return QStringLiteral("LPT");
    case 5:
        return QStringLiteral("WINUSB");
    default:
        return QString();
    }
}

void print(QIODevice& out, QString const& line)
{
    out.write(line.toUtf8() + '\n');
}

void printCables(Bench const& bench, bool onlyWinUsb, QIODevice& out)
{
    QStringList const kinds = onlyWinUsb
                                  ? QStringList{QStringLiteral("WINUSB")}
                                  : QStringList{QStringLiteral("FT2CH"), QStringLiteral("TR7QZ")};
    for (BenchCable const& cable : cablesInSight(bench, kinds))
        print(out, cableLine(cable));
}

/// The kind of the cable to be used: without a number that of the only cable on the desk, if it
/// is the only one.
QString kindOfRequest(Bench const& bench, Request const& request)
{
    if (!request.has("cable-index") && bench.cables.size() == 1)
        return bench.cables.first().kind;
    return kindOfNumber(request.number("cable-index"));
}

/// Whether the cable is plugged in, at the location if one is asked for.
bool hasCable(Bench const& bench, Request const& request)
{
    QString const kind = kindOfRequest(bench, request);
    for (BenchCable const& cable : cablesInSight(bench, {kind}))
        if (!request.has("location") || !bench.listsCables ||
            cable.location == request.number("location"))
            return true;
    return false;
}

int printChain(Bench const& bench, QIODevice& out)
{
    print(out, QStringLiteral("Scanning!"));
    for (ChainDevice const& device : bench.loader.chain) {
        print(out, QStringLiteral("Device Info:"));
        print(out, QStringLiteral("    Family: %1").arg(device.family));
        print(out, QStringLiteral("    Name: %1").arg(device.name));
        print(out, QStringLiteral("    ID: 0x%1").arg(device.id));
    }
    print(out, QStringLiteral("%1 device(s) found!").arg(bench.loader.chain.size()));
    return EXIT_SUCCESS;
}

int download(Bench const& bench, Request const& request, QIODevice& out)
{
    QString const file = request.values.value(QStringLiteral("fsFile"));
    print(out, QStringLiteral("\"%1\"").arg(file));
    if (!QFileInfo(file).isFile()) {
        print(out, QStringLiteral("Error: %1 can't be read.").arg(file));
        return EXIT_SUCCESS; // the programmer tells such things in words only
    }
    print(out, QStringLiteral("Operation \"%1\" for device \"%2\"...")
                   .arg(request.number("operation_index"))
                   .arg(request.values.value(QStringLiteral("device"))));
    for (int percent = 25; percent <= 100; percent += 25)
        print(out, QStringLiteral("Programming...: [%1] %2%")
                       .arg(QString(percent / 4, QLatin1Char('#')))
                       .arg(percent));
    if (!bench.loader.bitstream.isEmpty()) {
        QFile mark(bench.loader.bitstream);
        if (!mark.open(QIODevice::WriteOnly)) {
            print(out, QStringLiteral("Error: %1 can't be written.").arg(mark.fileName()));
            return EXIT_SUCCESS;
        }
        mark.write(file.toUtf8());
    }
    print(out, QStringLiteral("Finished."));
    return EXIT_SUCCESS;
}

int serve(Bench const& bench, Request const& request, QIODevice& out)
{
    if (request.scansCables) {
        printCables(bench, request.onlyWinUsb, out);
        return EXIT_SUCCESS;
    }
    if (!hasCable(bench, request)) {
        print(out, QStringLiteral("Error: Cable failed to open."));
        return EXIT_FAILURE;
    }
    if (request.scansDevices)
        return printChain(bench, out);
    if (request.has("fsFile"))
        return download(bench, request, out);
    print(out, QStringLiteral("Status Code is: 0x0001F020"));
    return EXIT_SUCCESS;
}

/// A line with the arguments as a JSON list for each run.
void log(QString const& path, QStringList const& arguments)
{
    QFile file(path);
    if (!path.isEmpty() && file.open(QIODevice::Append))
        file.write(
            QJsonDocument(QJsonArray::fromStringList(arguments)).toJson(QJsonDocument::Compact) +
            '\n');
}

} // namespace

int runLoader(Bench const& bench, QStringList const& arguments, QIODevice& out)
{
    LoaderBench const& loader = bench.loader;
    log(loader.log, arguments);
    if (loader.delay > 0)
        QThread::msleep(static_cast<unsigned long>(loader.delay));
    if (loader.crash)
        std::abort();
    while (loader.flood && out.write(QByteArray(65536, '.')) > 0) {
    }
    Request const request = parse(arguments);
    if (!request.isValid) {
        print(out, QStringLiteral("Error: the arguments are not understood."));
        return EXIT_FAILURE;
    }
    int const status = loader.exitCode ? loader.exitCode : serve(bench, request, out);
    if (!loader.output.isEmpty())
        print(out, loader.output);
    return status;
}

} // namespace VEK::Simulator
