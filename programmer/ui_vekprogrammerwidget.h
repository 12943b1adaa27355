#pragma once

#include <QList>

class QAbstractButton;
class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;
class QTableView;
class QTextEdit;
class QWidget;

namespace VEK {

/// The form of the programming panel.
class Ui_VekProgrammerWidget
{
public:
    void setupUi(QWidget* widget);

    /// The six that start a run or change the table.
    QList<QAbstractButton*> buttons() const;

    QCheckBox* enableBox = nullptr;
    QPushButton* searchDevice = nullptr;
    QPushButton* downLoad = nullptr;
    QPushButton* addDevice = nullptr;
    QPushButton* rmDevice = nullptr;
    QPushButton* moveUp = nullptr;
    QPushButton* moveDown = nullptr;
    QLabel* labelFrequency = nullptr;
    QComboBox* comboBoxFrequency = nullptr;
    QTableView* tableView = nullptr;
    QTextEdit* textEdit = nullptr;

private:
    QPushButton* makeButton(QWidget* widget, char const* name, char const* caption);
    void makeTable(QWidget* widget);
    void makeOutput(QWidget* widget);
};

} // namespace VEK
