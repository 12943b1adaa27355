#pragma once

#include <QBitArray>
#include <QString>
#include <QVariant>

namespace WaveMonitor {

struct LayoutNode;
class ModelLayout;
class SignalStore;

/// What a row of the tree shows: its name and value, with font, background and height.
class RowDisplay
{
public:
    /// Both are not owned.
    RowDisplay(ModelLayout const* layout, SignalStore const* store);

    /// The data of an item model at one role: in the name column, or in that of the values at
    /// `time`, which counts in samples. Invalid for a role that a row of that kind doesn't have.
    QVariant nameData(LayoutNode const* node, int role) const;
    QVariant valueData(LayoutNode const* node, int role, int time) const;

private:
    QVariant nameFont(LayoutNode const* node) const;
    QString valueText(LayoutNode const* node, int time) const;
    QBitArray busValue(LayoutNode const* bus, int time) const;

    ModelLayout const* m_layout;
    SignalStore const* m_store;
};

} // namespace WaveMonitor
