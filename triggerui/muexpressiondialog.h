#pragma once

#include <QDialog>
#include <QList>
#include <QStringList>

#include <memory>

class QPushButton;
class QSignalMapper;

namespace VEK {

class Ui_MuExpressionDialog;

/// Composes a trigger expression out of whole tokens by buttons: nothing can be typed, so what is
/// shown is always a sequence of tokens. `isOk` says whether it makes an expression.
class MuExpressionDialog : public QDialog
{
    Q_OBJECT

public:
    explicit MuExpressionDialog(QWidget* parent = nullptr);
    ~MuExpressionDialog() override;

    /// Runs the dialog with the unit buttons that `enabled` has flags for, by unit index. Null when
    /// it was cancelled.
    static QString getExpression(QList<bool>& enabled, QWidget* parent);

    /// Unit button i follows flag i; buttons without a flag stay as they are.
    void changeMIndexEnable(QList<bool> const& enabled);

    QString currentExpression() const;
    bool isOk() const;

public Q_SLOTS:
    /// Stays open with a message when the tokens make no expression.
    void accept() override;
    void expBtnClicked(QString const& token);
    void backspaceClicked();
    void clearAllClicked();

private:
    void addToken(QPushButton* button, QString const& token);
    void showTokens();

    std::unique_ptr<Ui_MuExpressionDialog> ui;
    QList<QPushButton*> unitButtons; ///< By unit index.
    QStringList tokens;
    QSignalMapper* mapper;
};

} // namespace VEK
