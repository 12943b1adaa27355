#pragma once

#include <QtGlobal>

QT_BEGIN_NAMESPACE
class QCheckBox;
class QComboBox;
class QDialog;
class QDialogButtonBox;
class QGroupBox;
class QLabel;
class QRadioButton;
class QSpinBox;
class QTreeWidget;
class QWidget;
QT_END_NAMESPACE

namespace VEK {

/// The form of the match unit dialog. Names of the widgets are those of the fields.
class Ui_MatchUnitDialog
{
public:
    /// `dialog` owns all widgets.
    void setupUi(QDialog* dialog);

    QLabel* lbTitle = nullptr;
    QGroupBox* groupBoxTrigger = nullptr;
    QComboBox* comboBoxTrigger = nullptr;
    QTreeWidget* treeSignals = nullptr;
    QGroupBox* groupBoxGeneral = nullptr;
    QLabel* lbType = nullptr;
    QComboBox* comboBoxType = nullptr;
    QLabel* lbFunc = nullptr;
    QComboBox* comboBoxFunc = nullptr;
    QGroupBox* groupBoxValue0 = nullptr;
    QRadioButton* rbtnBin = nullptr;
    QRadioButton* rbtnOct = nullptr;
    QRadioButton* rbtnDec = nullptr;
    QRadioButton* rbtnHex = nullptr;
    QLabel* lbValue0 = nullptr;
    QTreeWidget* treeSignals0 = nullptr;
    QLabel* lbValue1 = nullptr;
    QTreeWidget* treeSignals1 = nullptr;
    QGroupBox* groupBoxCounter = nullptr;
    QLabel* lbWidth = nullptr;
    QSpinBox* spinBoxCounterWidth = nullptr;
    QLabel* lbCount = nullptr;
    QSpinBox* spinBoxCounter = nullptr;
    QCheckBox* checkBoxContinuous = nullptr;
    QDialogButtonBox* buttonBox = nullptr;

private:
    QWidget* makeTrigger(QDialog* dialog);
    QWidget* makeGeneral(QDialog* dialog);
    QWidget* makeValues(QDialog* dialog);
    QWidget* makeCounter(QDialog* dialog);
};

} // namespace VEK
