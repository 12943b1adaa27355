#pragma once

#include <QComboBox>

/// The choice of a cable: the kinds, each at any location, and those that a search has found.
class CableBox : public QComboBox
{
    Q_OBJECT

public:
    explicit CableBox(QWidget* parent = nullptr);

    /// Cables as `VEK::VekProgrammerModel::cables` gives them, in place of those found before. The
    /// choice stays if it is among them.
    void showFound(QList<QStringList> const& cables);

    /// Of the choice: its number, as the programmer counts cables; its name of `VEK::Server`; its
    /// location, empty for any.
    int cable() const { return currentData().toInt(); }
    QString name() const;
    QString location() const { return currentData(LocationRole).toString(); }

private:
    static constexpr int LocationRole = Qt::UserRole + 1;

    void add(QString const& text, int number, QString const& location);
};
