#include "simulator/standardchip.h"

#include "simulator/bitfield.h"
#include "simulator/log.h"

#include <utility>

namespace VEK::Simulator {
namespace {

constexpr int SelectBits = 5; ///< A one, then the core's number.
constexpr int NumberBits = 4;

} // namespace

Chip::~Chip() = default;

StandardChip::StandardChip(std::vector<BuiltCore> cores, std::vector<Dump::SampleTable> samples,
                           bool takesOneMore)
    : m_built(std::move(cores)), m_samples(std::move(samples))
{
    for (std::size_t i = 0; i < m_built.size(); ++i)
        m_cores.push_back(std::make_unique<StandardCore>(m_built[i], m_samples[i], takesOneMore));
}

StandardChip::~StandardChip() = default;

void StandardChip::powerUp()
{
    m_selected = nullptr;
    for (auto const& core : m_cores)
        core->powerUp();
}

void StandardChip::write(QBitArray const& word)
{
    if (word.size() == SelectBits)
        select(word);
    else if (m_selected)
        m_selected->write(word);
    else
        qCDebug(lcSimulator) << "no core takes the word" << word;
}

/// The selection stays until the next one. Of cores that share a number the first one answers.
void StandardChip::select(QBitArray const& word)
{
    if (!word.testBit(0)) {
        qCDebug(lcSimulator) << "no core select:" << word;
        return;
    }
    quint64 const number = fieldNumber(word, 1, NumberBits);
    m_selected = nullptr;
    for (std::size_t i = m_cores.size(); i-- > 0;) {
        if ((unsigned(m_built[i].index) & ((1u << NumberBits) - 1)) == number)
            m_selected = m_cores[i].get();
    }
}

QString StandardChip::reason() const
{
    return m_selected ? m_selected->reason() : QString();
}

QBitArray StandardChip::read(int size)
{
    return m_selected ? m_selected->read(size) : QBitArray(size, true);
}

} // namespace VEK::Simulator
