#include "simulator/loader.h"
#include "simulator/log.h"

#include <QCoreApplication>
#include <QFile>

#include <csignal>
#include <cstdio>

using namespace VEK::Simulator;

int main(int argc, char* argv[])
{
    std::signal(SIGPIPE, SIG_IGN);
    QCoreApplication application(argc, argv);

    Bench bench;
    QString error;
    QString const path = findBench(QCoreApplication::applicationDirPath());
    if (!path.isEmpty() && !readBench(path, bench, error)) {
        qCWarning(lcSimulator).noquote() << error;
        return EXIT_FAILURE;
    }
    QFile out;
    if (!out.open(stdout, QIODevice::WriteOnly | QIODevice::Unbuffered))
        return EXIT_FAILURE;
    return runLoader(bench, QCoreApplication::arguments().mid(1), out);
}
