#include "results/outputbuffer.h"

#include <QFile>

#include <algorithm>
#include <cstring>

namespace VEK {
namespace {

constexpr int Capacity = 128 * 1024;
static_assert(Capacity >= OutputBuffer::MaxReserve);

} // namespace

bool openForExport(QFile& file)
{
    // unbuffered: OutputBuffer hands over large blocks; the check keeps a warning of Qt away
    return !file.fileName().isEmpty() && file.open(QIODevice::WriteOnly | QIODevice::Truncate |
                                                   QIODevice::Text | QIODevice::Unbuffered);
}

OutputBuffer::OutputBuffer(QIODevice& device)
    : m_device(device), m_bytes(new char[Capacity]), m_at(m_bytes.get()), m_end(m_at + Capacity)
{}

OutputBuffer::~OutputBuffer()
{
    flush();
}

void OutputBuffer::append(QByteArray const& bytes)
{
    for (int done = 0; done < bytes.size();) {
        int const count = std::min(bytes.size() - done, MaxReserve);
        char* place = reserve(count);
        std::memcpy(place, bytes.constData() + done, std::size_t(count));
        commit(place + count);
        done += count;
    }
}

void OutputBuffer::flush()
{
    char const* from = m_bytes.get();
    while (!m_failed && from < m_at) {
        qint64 const written = m_device.write(from, m_at - from);
        m_failed = written <= 0;
        from += std::max<qint64>(0, written);
    }
    m_at = m_bytes.get();
}

bool OutputBuffer::finish()
{
    flush();
    auto* const file = qobject_cast<QFileDevice*>(&m_device);
    m_failed = m_failed || (file && !file->flush());
    return !m_failed;
}

} // namespace VEK
