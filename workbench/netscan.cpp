#include "workbench/netscan.h"

#include <QFile>
#include <QThread>

using namespace VEK;

namespace {

/// Ends when it is told to, from another thread.
class StoppableFile : public QFile
{
public:
    StoppableFile(QString const& path, std::atomic<bool> const& isStopped)
        : QFile(path), m_isStopped(isStopped)
    {}

protected:
    qint64 readData(char* data, qint64 size) override
    {
        return m_isStopped ? -1 : QFile::readData(data, size);
    }

private:
    std::atomic<bool> const& m_isStopped;
};

} // namespace

NetScan::NetScan(QString const& dump, QObject* parent) : QObject(parent)
{
    m_thread.reset(QThread::create([this, dump] {
        StoppableFile file(dump, m_isStopped);
        QString warning;
        QString error;
        if (!file.open(QIODevice::ReadOnly))
            m_message = file.errorString();
        else
            m_message = Dump::listNets(file, m_nets, warning, error) ? warning : error;
    }));
    connect(m_thread.get(), &QThread::finished, this, &NetScan::done);
    m_thread->start();
}

NetScan::~NetScan()
{
    m_isStopped = true;
    m_thread->wait();
}
