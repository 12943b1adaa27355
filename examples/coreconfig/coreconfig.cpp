// Edits the cores of a Standard configuration file in the core panel and writes the file back:
//
//     core_config design.vek                  a window with a page for each core
//     core_config design.vek --grab out.png   writes the window's picture, and ends
//
// This is how a host application embeds the panel: a panel for each core, `save()` on each, and one
// call that writes the file, whole or not at all.

#include "model/standardfile.h"
#include "model/vekfile.h"
#include "results/wholefile.h"
#include "triggerui/dynamicconfigwidget.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDialog>
#include <QDialogButtonBox>
#include <QMessageBox>
#include <QPushButton>
#include <QTabWidget>
#include <QTextStream>
#include <QVBoxLayout>

using namespace VEK;

namespace {

/// The cores of a file, owned.
struct Design
{
    ~Design() { qDeleteAll(cores); }

    /// False, with `error`, when the file holds no cores that can be shown.
    bool read(QString const& file)
    {
        path = file;
        bool ok = vekModeFromVekConfigFile(path) == VekModeStandard;
        if (!ok) {
            error = QStringLiteral("no Standard configuration file");
            return false;
        }
        QString id;
        cores = readVEKConfigFromXml(path, id, &ok, &error);
        if (ok && cores.isEmpty())
            error = QStringLiteral("there are no cores in it");
        return error.isEmpty();
    }

    QString path;
    QString error;
    QList<SxCore*> cores;
};

class Window : public QDialog
{
public:
    explicit Window(Design& design) : m_design(design), m_pages(new QTabWidget(this))
    {
        setWindowTitle(design.path);
        for (SxCore* const core : qAsConst(design.cores)) {
            auto* const panel = new DynamicConfigWidget(m_pages);
            panel->setSxCore(core);
            panel->setEnabled(true);
            m_pages->addTab(panel, QStringLiteral("Core %1").arg(core->index));
        }
        auto* const buttons =
            new QDialogButtonBox(QDialogButtonBox::Save | QDialogButtonBox::Close, this);
        connect(buttons, &QDialogButtonBox::accepted, this, [this] { save(); });
        connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
        auto* const layout = new QVBoxLayout(this);
        layout->addWidget(m_pages);
        layout->addWidget(buttons);
        resize(sizeHint().expandedTo(QSize(880, 640)));
    }

private:
    void save()
    {
        for (auto* const panel : m_pages->findChildren<DynamicConfigWidget*>())
            panel->save();
        QString error;
        QByteArray const text = writeVekConfigToString(m_design.cores).toLatin1();
        if (!writeWholeFile(m_design.path, text, error))
            QMessageBox::critical(
                this, QStringLiteral("Error"),
                QStringLiteral("%1 can't be written: %2.").arg(m_design.path, error));
    }

    Design& m_design;
    QTabWidget* m_pages;
};

int fail(QString const& text)
{
    QTextStream(stderr) << "core_config: " << text << "\n";
    return 1;
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication app(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("file"), QStringLiteral("Configuration file."));
    QCommandLineOption const grab(QStringLiteral("grab"), QStringLiteral("Write a picture, end."),
                                  QStringLiteral("out.png"));
    parser.addOption(grab);
    parser.process(app);
    if (parser.positionalArguments().size() != 1)
        parser.showHelp(1);

    Design design;
    if (!design.read(parser.positionalArguments().constFirst()))
        return fail(QStringLiteral("%1: %2").arg(design.path, design.error));
    Window window(design);
    if (parser.isSet(grab)) {
        bool const written = window.grab().save(parser.value(grab));
        return written ? 0 : fail(QStringLiteral("%1 can't be written").arg(parser.value(grab)));
    }
    window.show();
    return app.exec();
}
