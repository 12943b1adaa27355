#pragma once

#include "image/matchvalue.h"
#include "model/capturecore.h"
#include "triggerui/treelineedit.h"

#include <QDialog>
#include <QPointer>

#include <memory>

class QPoint;
class QRegExpValidator;
class QTreeWidget;

namespace VEK {

class Ui_MatchUnitDialog;

/// Edits one match unit: the trigger port it watches, type and function, one or two values by
/// signal or bus in a radix, and the counter. Nothing is written before the dialog is accepted.
class MatchUnitDialog : public QDialog
{
    Q_OBJECT

public:
    /// `unit` is not owned and must outlive the dialog, with its core. With `fixedStructure` only
    /// what can change without rebuilding the design is open to change.
    MatchUnitDialog(MatchUnit* unit, bool fixedStructure, QWidget* parent = nullptr);
    ~MatchUnitDialog() override;

public Q_SLOTS:
    /// Writes the unit and closes. Without a port nothing is written; with a range whose end lies
    /// below its beginning a message is shown and the dialog stays open.
    void accept() override;

    void onTriggerChanged();
    void onTypeChanged();
    void onFuncChanged();
    void onBaseChanged();
    void onCounterWidthChanged();
    /// The number of digits that a value of `width` bits has in the present radix.
    int calculatedBitwidth(int width);
    void toolTipValueChanged(QTreeWidget* tree);
    void onEditMenu(QPoint position);
    void onChangeX();
    void onChange0();
    void onChange1();
    void onChangeR();
    void onChangeF();
    void onChangeB();
    void onChangeN();
    void onBusEditChange();
    void onSubEditChange();

private:
    /// The texts of both values, one character a bit.
    struct Values
    {
        QString first;
        QString second;
    };

    void initialize();
    void initializeCounter();
    void connectForm();
    void writeUnit(Values const& values);
    bool isRange() const;
    void fillFunctions();
    void showRangeRows();
    void warn(QString const& text);

    void fillTrees();
    void clearTrees();
    void fillValueTree(QTreeWidget* tree);
    TreeLineEdit* Signal2treeItemAndEdit(QTreeWidget* tree, SignalItem const& item, int row);
    void updateValidator();
    void setEditorType(QLineEdit* edit, int width);
    void resetTree(QTreeWidget* tree);
    void resetTrees();
    QString getEditor(QTreeWidget* tree, bool replaceLetters) const;
    void setEditor(QString const& value, QTreeWidget* tree);
    QString bitsOfRow(TreeLineEdit const* row) const;
    QString bitOf(TreeLineEdit const* edit) const;
    void showRow(TreeLineEdit* row, QString const& bits);
    void spread(TreeLineEdit* edit);
    void changeAll(QChar to);
    Values readValues(bool replaceLetters);
    void applyValues(Values const& values);

    std::unique_ptr<Ui_MatchUnitDialog> ui;
    bool fixedStructure;
    QRegExpValidator* validator; ///< Of all value editors.
    MatchUnit* unit;
    SxCore* core;
    TriggerPort* port = nullptr;
    int matchType;
    int func;
    int radix = 2;
    QPointer<TreeLineEdit> menuEdit; ///< The editor that the menu was opened on.
};

} // namespace VEK
