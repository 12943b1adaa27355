#pragma once

#include "results/realtype.h"

#include <QDialog>

#include <memory>

class QAbstractButton;

namespace VEK {

class Ui_RealDialog;

/// Asks how the bits of a bus are read as a real number.
class RealDialog : public QDialog
{
    Q_OBJECT

public:
    /// Shows `type`; a kind of number that is none is shown as signed fixed point, and a point out
    /// of range as the nearest in range.
    RealDialog(RealType type, QWidget* parent);
    ~RealDialog() override;

    /// What was given at first, and since OK or Apply what the form held then.
    RealType realType;
    /// OK or Apply was clicked; stays set when the dialog is cancelled after an Apply.
    bool confirmed = false;

Q_SIGNALS:
    /// `realType` holds the values to apply; the dialog stays open.
    void clickApply();

public Q_SLOTS:
    void buttonClicked(QAbstractButton* button);
    void updateRealType();
    void onSingle();
    void onDouble();

private:
    void updateDialog();
    void takeForm();
    void showWidths(int exponent, int fraction);

    std::unique_ptr<Ui_RealDialog> ui;
};

} // namespace VEK
