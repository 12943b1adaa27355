#pragma once

#include "results/dataformatter.h"
#include "results/signaldata.h"
#include "wavemonitor/localized.h"
#include "wavemonitor/signalelement.h"
#include "wavemonitor/waveview.h"

#include <QAbstractItemModel>
#include <QBitArray>
#include <QDomDocument>
#include <QDomElement>
#include <QMap>
#include <QStringList>

#include <functional>
#include <memory>

class QTreeView;

namespace WaveMonitor {

struct LayoutNode;
struct Notification;
class LayoutEditor;
class ModelLayout;
class RowDisplay;
class SignalStore;
class TreeLink;
class WaveViewDataSource;

/// The data of one monitor and its arrangement, as an item model for the tree and as the data
/// source of the wave view. It joins what others do: the captured signals and the arrangement are
/// kept apart, and each edit is handed on. Column 0 is a row's name, column 1 its value at the
/// current time; the internal pointer of an index is its `LayoutNode`. Times count in samples.
///
/// Operations on indexes ignore invalid ones and those of other models.
class SignalTreeModel : public QAbstractItemModel,
                        public Localized,
                        public WaveView::DataSourceProtocol
{
    Q_OBJECT
    Q_PROPERTY(quint64 domain READ domain WRITE setDomain)

public:
    enum Column { NameColumn, ValueColumn, ColumnCount };

    explicit SignalTreeModel(QObject* parent = nullptr);
    ~SignalTreeModel() override;

    int columnCount(QModelIndex const& = QModelIndex()) const override { return ColumnCount; }
    int rowCount(QModelIndex const& parent = QModelIndex()) const override;
    QModelIndex index(int row, int column,
                      QModelIndex const& parent = QModelIndex()) const override;
    QModelIndex parent(QModelIndex const& index) const override;
    using QObject::parent;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(QModelIndex const& index) const override;
    Qt::DropActions supportedDropActions() const override
    {
        return Qt::CopyAction | Qt::MoveAction;
    }
    Qt::DropActions supportedDragActions() const override { return supportedDropActions(); }
    QVariant data(QModelIndex const& index, int role = Qt::DisplayRole) const override;

    /// Renames a row; an empty text is refused. Sends no signal: the editing view repaints itself.
    bool setData(QModelIndex const& index, QVariant const& value, int role = Qt::EditRole) override;

    /// Adds a row at the end. An element that has the id already is replaced.
    void addRawSignal(SignalData const& signal);
    void addBus(BusData const& bus);

    /// Adds a top-level divider above the row `at`, or as row `id`, held within the rows.
    void addRawDivider(int id, QModelIndex const& at);

    /// Adds a divider above the row `at`, or at the end.
    void NewDivider(QModelIndex const& at);

    /// Deletes the divider `at`, a child of `parent`; rows that are none stay. A bus that holds
    /// nothing else goes with it.
    void DeleteDivider(QModelIndex const& parent, QModelIndex const& at);

    /// Reverses the order of a bus's members.
    void reverse(QModelIndex const& index);

    /// Makes a bus of top-level rows if all their signals have as many samples. `rows` stand in
    /// the order of their rows. Rows without any signal, and members of buses, are not grouped.
    void groupBus(QList<QModelIndex> const& rows);

    /// Puts a bus's members into its place.
    void ungroupBus(QModelIndex const& index);

    /// Shows the full hierarchical names of a signal, or of a bus and its members.
    void ChangeLongName(QModelIndex const& index);

    /// Shows only the last part of the names.
    void ChangeShortName(QModelIndex const& index);

    /// Takes display texts away, unless a long or short name was chosen: that form rules the name.
    void restoreOrgName(QModelIndex const& index);

    /// Move rows of one parent, given in the order of their rows, next to a row that is none of
    /// them, or to the head or end of a parent: a bus, or the top level for an invalid index. They
    /// return the rows' indexes after the move. Rows that can't go there, a bus into a bus, stay. A
    /// bus whose last row leaves it goes.
    QList<QModelIndex> insertIndexesForward(QModelIndex const& target,
                                            QList<QModelIndex> const& indexes);
    QList<QModelIndex> insertIndexesBackward(QModelIndex const& target,
                                             QList<QModelIndex> const& indexes);
    QList<QModelIndex> prepend2Parent(QList<QModelIndex> const& indexes, QModelIndex const& parent);
    QList<QModelIndex> append2Parent(QList<QModelIndex> const& indexes, QModelIndex const& parent);

    /// The default format of the monitor.
    void setDataFormat(DataFormat::Type type);
    DataFormat::Type dataFormat() const { return m_dataFormatter.formatType(); }

    /// Sample of the trigger within one window. It becomes the current time, too.
    void setTriggerPosition(int time);
    int triggerPosition() override { return m_triggerPosition; }

    /// The sample that the value column shows.
    void setCurrentTime(int time);
    int currentTime() const { return m_currentTime; }

    /// Number of windows that lie one after the other in the data; less than 1 counts as 1.
    void setWindowsNum(int count);
    int WindowsNum() override { return m_windowsNum; }

    /// Paints the tree again.
    void updateTreeView();

    /// The greatest number of samples of a signal; 0 without signals.
    int timeLength() const;

    /// Number of samples of the signal with id 0; 0 without it.
    int oneWindowSize() override;

    /// The element of that id, or null; `visit`, if set, is called with it when it is there.
    SignalElement* signalElementByID(int id,
                                     std::function<void(SignalElement*)> const& visit = {}) const;

    /// All elements by id. They stay the model's.
    QMap<int, SignalElement*> const& signalElements() const;

    /// Replaces the samples of the signals 0 to n - 1. Ignored unless there is an array for each
    /// signal; ids without signal are skipped.
    void updataSingalDatas(QList<QBitArray> const& datas);

    /// Passes a change of the tree's selection on to the waves.
    void updateSelection(QList<QModelIndex> const& selected, QList<QModelIndex> const& deselected);

    /// Takes the highlight off all waves and brings them up to date.
    void updateSignalWaveChart();

    /// Brings the colours of the waves up to date.
    void updateSignalWaveColor();

    /// The wave item of a node, or null.
    QGraphicsItem* getItem(LayoutNode* node) const;

    QList<QGraphicsItem*> waveItems() override;
    void updateItems() override;
    void highlightItem(QGraphicsItem* item) override;

    /// Selects these rows alone in the tree.
    void selectOutView(QList<QModelIndex> const& indexes);

    bool indexIsExpanded(QModelIndex const& index) const;

    /// The tree that shows this model. Not owned.
    void setTreeView(QTreeView* view);

    /// Deletes all signals. The rows stay.
    void clear();

    /// The element "Window" with signals and arrangement, made in the document but not placed in
    /// it. It has no attribute "index": whoever places it sets that.
    QDomElement save(QDomDocument& document) const;
    QDomElement saveData(QDomDocument& document) const;   ///< Its child "Signals".
    QDomElement saveLayout(QDomDocument& document) const; ///< Its child "Layout".

    /// Takes a "Window" element. Index 0 replaces everything; any other index, or none, appends its
    /// samples to the signals.
    void restore(QDomElement const& window);

    /// The signals of a "Window" element: with index 0 new ones, each with a row at the end. Any
    /// other element is passed over.
    void restoreData(QDomElement const& window);

    /// Replaces all rows by those of a "Layout" element; a null one is ignored. Rows of unknown
    /// signals stay empty.
    void restoreLayout(QDomElement const& layout);

    /// The arrangement. It stays the model's.
    ModelLayout* layout() const { return m_layout.get(); }

    Q_INVOKABLE void handleEvents(Notification* note);

Q_SIGNALS:
    /// The arrangement of the rows was edited: grouped, ungrouped, reversed, moved, renamed, given
    /// another format, row height or colour, or a divider came or went. Not for rows that come with
    /// data, nor for those of a restored layout.
    void layoutEdited();

private:
    friend class LayoutEditor; // announces edits
    friend class ModelLayout;  // announces rows

    void post(quint32 type);
    void removeAllRows();

    QStringList m_headers{QString(), QString()};
    int m_triggerPosition = 0;
    int m_currentTime = 0;
    int m_windowsNum = 1;
    std::unique_ptr<SignalStore> m_store;
    // Wave items borrow the formatters of the nodes: they go before the layout.
    std::unique_ptr<ModelLayout> m_layout;
    std::unique_ptr<LayoutEditor> m_editor;
    std::unique_ptr<RowDisplay> m_display;
    DataFormatter m_dataFormatter{DataFormat::Hexadecimal};
    std::unique_ptr<WaveViewDataSource> m_dataSource;
    std::unique_ptr<TreeLink> m_treeLink;
};

} // namespace WaveMonitor
