#pragma once

#include "wavemonitor/tree/layoutnode.h"

#include <QList>
#include <QModelIndex>
#include <QString>

namespace WaveMonitor {

class ModelLayout;
class SignalStore;
class SignalTreeModel;

/// What a user does to the arrangement: group, reverse and move rows, name them, add and delete
/// dividers. Every edit is told in the model's name, as a note and by `layoutEdited`.
///
/// Operations on indexes ignore invalid ones and those of other models.
class LayoutEditor
{
public:
    /// On which side of a row, or at which end of a parent, rows are put.
    enum Side { Before, After };

    /// None of these is owned.
    LayoutEditor(SignalTreeModel* model, ModelLayout* layout, SignalStore* store);

    /// Adds a top-level divider above the row `at`, or as row `id`, held within the rows.
    void addDivider(int id, QModelIndex const& at);

    /// Deletes the divider `at`, a child of `parent`. A bus that holds nothing else goes with it.
    void deleteDivider(QModelIndex const& parent, QModelIndex const& at);

    /// Reverses the order of a bus's members.
    void reverse(QModelIndex const& index);

    /// Makes a bus of top-level rows if all their signals have as many samples.
    void group(QList<QModelIndex> const& rows);

    /// Puts a bus's members into its place.
    void ungroup(QModelIndex const& index);

    /// Gives a row a display text of its own. The index is one of the model's, the text not empty.
    void rename(QModelIndex const& index, QString const& text);

    /// Shows a signal, or a bus and its members, by the long or the short form of the name.
    void setNameForm(QModelIndex const& index, LayoutNode::NameType form);

    /// Takes display texts away, unless a long or short name was chosen: that form rules the name.
    void restoreName(QModelIndex const& index);

    /// Move rows of one parent next to a row that is none of them, or to the head or end of a
    /// parent. They return the rows' indexes after the move.
    QList<QModelIndex> moveNextTo(QModelIndex const& target, Side side,
                                  QList<QModelIndex> const& indexes);
    QList<QModelIndex> moveInto(QModelIndex const& parent, Side side,
                                QList<QModelIndex> const& indexes);

private:
    LayoutNode* busAt(QModelIndex const& index) const;
    bool haveOneLength(QList<QModelIndex> const& rows) const;
    void setSignalName(LayoutNode* node, LayoutNode::NameType form);
    void dropEmptyBus(LayoutNode* parent);
    QList<QModelIndex> moveRows(QList<QModelIndex> const& indexes, LayoutNode* parent, int from);
    void announceEdit();

    SignalTreeModel* m_model;
    ModelLayout* m_layout;
    SignalStore* m_store;
};

} // namespace WaveMonitor
