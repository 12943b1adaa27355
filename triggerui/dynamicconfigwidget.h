#pragma once

#include "model/capturecore.h"

#include <QDialog>
#include <QPointer>
#include <QWidget>

#include <memory>

class QListWidgetItem;

namespace VEK {

class CountingModel;
class MatchUnitModel;
class Ui_DynamicConfigWidget;

/// The panel of one capture core: what may change without rebuilding the design. Match units and
/// the text of expressions are written into the core as they are edited, the rest by `save`. The
/// panel begins disabled; its host enables it.
class DynamicConfigWidget : public QWidget
{
    Q_OBJECT

public:
    explicit DynamicConfigWidget(QWidget* parent = nullptr);
    ~DynamicConfigWidget() override;

    /// Shows a core, which is not owned and must outlive its stay here; null empties the panel.
    void setSxCore(SxCore* core);

    /// Writes segments, amount, position and the expressions in use into the core. A box without a
    /// choice leaves the core's value, and so does a static core its flags.
    void save();

    /// The number of segments chosen, 0 without a choice.
    int windowNum() const;

    /// Empties the panel, which shows no core from then on.
    void resetUI();

    /// The units shown, for a host that shows the hidden column of their check marks.
    MatchUnitModel* matchUnitModel() const { return model; }

Q_SIGNALS:
    void windowNumChanged();

public Q_SLOTS:
    /// Edits the first selected unit, its structure fixed.
    void editMu();
    void onWindowNumChanged();
    void onCaptureAmountChanged();
    /// Edits an expression of a dynamic core.
    void editExpression(QListWidgetItem* item);

protected:
    /// Return and F2 edit what the table and the list stand on.
    bool eventFilter(QObject* view, QEvent* event) override;

private:
    void setWindows();
    void resetCaptureAmount();
    void setPositionLimit(int amount);
    void setExpressions();

    std::unique_ptr<Ui_DynamicConfigWidget> ui;
    SxCore* core = nullptr; ///< Not owned.
    MatchUnitModel* model;
    CountingModel* windows = nullptr; ///< The items of the segments' combo box.
    QPointer<QDialog> unitDialog;     ///< While one of its units is edited.
};

} // namespace VEK
