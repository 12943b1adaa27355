#pragma once

#include "simulator/chip.h"
#include "simulator/standardcore.h"

#include <memory>
#include <vector>

namespace VEK::Simulator {

/// A chip with standard cores, told apart by the 4 low bits of their index.
class StandardChip : public Chip
{
public:
    /// `samples[i]` belongs to `cores[i]` and has at least one row.
    StandardChip(std::vector<BuiltCore> cores, std::vector<Dump::SampleTable> samples,
                 bool takesOneMore);
    ~StandardChip() override;

    void powerUp() override;
    void write(QBitArray const& word) override;
    QBitArray read(int size) override;
    QString reason() const override;

    /// The core that was selected last; null for none, or one that is not there.
    StandardCore const* selected() const { return m_selected; }

private:
    void select(QBitArray const& word);

    std::vector<BuiltCore> m_built;
    std::vector<Dump::SampleTable> m_samples;
    std::vector<std::unique_ptr<StandardCore>> m_cores;
    StandardCore* m_selected = nullptr; ///< Null: none, or one that is not there.
};

} // namespace VEK::Simulator
