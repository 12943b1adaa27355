#pragma once

#include "cli/newdesign.h"

#include <QDialog>

#include <memory>

class NetScan;
class NetTree;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;

/// Makes a configuration for rehearsals and its bench file from the dump of a simulation: its nets
/// to choose from, the clock, depth and windows, the trigger as a text.
class SimulationDialog : public QDialog
{
    Q_OBJECT

public:
    /// `folder` is where files are looked for.
    explicit SimulationDialog(QString const& folder, QWidget* parent = nullptr);
    ~SimulationDialog() override;

    /// Takes a dump, and shows what is in it.
    void openDump(QString const& path);

    /// The configuration that was made, once the dialog was accepted.
    QString configuration() const { return m_made.configuration; }

    void accept() override;

private:
    void makeForm();
    QLineEdit* makePathLine(char const* name, char const* chooseName,
                            void (SimulationDialog::*choose)());
    void chooseDump();
    void chooseOutput();
    void showClocks();
    void onChoice();
    void follow();
    VEK::Cli::NewDesign design() const;
    void tell(QString const& error);

    QString m_folder;
    std::vector<VEK::Dump::VcdVariable> m_nets;
    QList<VEK::SignalItem> m_signals; ///< Those that are chosen.
    std::unique_ptr<NetScan> m_scan;
    VEK::Cli::MadeDesign m_made;

    QLineEdit* m_dump = nullptr;
    NetTree* m_tree = nullptr;
    QLabel* m_choice = nullptr;
    QComboBox* m_clock = nullptr;
    QSpinBox* m_depth = nullptr;
    QSpinBox* m_windows = nullptr;
    QLineEdit* m_position = nullptr;
    QLineEdit* m_trigger = nullptr;
    QLabel* m_triggerNote = nullptr;
    QLineEdit* m_output = nullptr;
    QLabel* m_error = nullptr;
    QPushButton* m_create = nullptr;
};
