#include "programmer/vekprogrammerwidget.h"

#include "model/alert.h"
#include "programmer/deviceconfigurationdlg.h"
#include "programmer/vekprogrammeritemdelegate.h"
#include "programmer/vekprogrammermodel.h"
#include "widgets/viewkeeper.h"
#include "widgets/waitingtip.h"

#include "ui_vekprogrammerwidget.h"

#include <QApplication>
#include <QPointer>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QStyle>
#include <QTextCursor>
#include <QTime>

namespace VEK {

namespace {

constexpr int EnableWidth = 50;
constexpr int MostLines = 10000;     // of the output pane
constexpr int LongestMessage = 2000; // laying out a line takes the square of its length

/// By `ProgrammerStatus`.
QString statusText(ProgrammerStatus status)
{
    switch (status) {
    case ProgrammerNothingFound:
        return QStringLiteral(" No device detected ");
    case ProgrammerRunning:
        return QStringLiteral(" Waiting download ");
    case ProgrammerDownloaded:
        return QStringLiteral(" Ready to acquire ");
    default:
        return QStringLiteral(" Please program the device first ");
    }
}

/// Devices whose chain runs at one frequency only, by package group.
bool hasFixedFrequency(QString const& deviceN)
{
    static QStringList const groups{
        QStringLiteral("TK-501"), QStringLiteral("TK-505"), QStringLiteral("TK-506"),
        QStringLiteral("TK-504"), QStringLiteral("TK-507"), QStringLiteral("TK-512"),
        QStringLiteral("TK-508"), QStringLiteral("TK-511"), QStringLiteral("TK-513"),
        QStringLiteral("TK-510"), QStringLiteral("TK-509"), QStringLiteral("TK-514"),
        QStringLiteral("TK-515"), QStringLiteral("TK-301"), QStringLiteral("TK-503")};
    return groups.contains(deviceN);
}

/// The captions in a size in which the narrow first column has room for its own.
QFont captionFont(QHeaderView const* header)
{
    QString const caption =
        header->model()->headerData(VekProgrammerModel::EnableColumn, Qt::Horizontal).toString();
    int const margins = 2 * header->style()->pixelMetric(QStyle::PM_HeaderMargin, nullptr, header);
    QFont font = header->font();
    for (qreal size = QFontInfo(font).pointSizeF(); size > 6; size -= 0.5) {
        font.setPointSizeF(size);
        if (QFontMetrics(font).horizontalAdvance(caption) + margins <= EnableWidth)
            break;
    }
    return font;
}

QStringList allFrequencies()
{
    return QStringLiteral("0.02MHz,0.1MHz,0.3MHz,0.4MHz,0.5MHz,0.75MHz,0.9MHz,1.1MHz,1.5MHz,2MHz,"
                          "2.5MHz,10MHz,15MHz")
        .split(QLatin1Char(','));
}

} // namespace

VekProgrammerWidget::VekProgrammerWidget(QWidget* parent)
    : QWidget(parent), ui(new Ui_VekProgrammerWidget), m_model(new VekProgrammerModel(this))
{
    ui->setupUi(this);
    ui->textEdit->document()->setMaximumBlockCount(MostLines);
    ui->tableView->setModel(m_model);
    ui->tableView->setItemDelegate(new VekProgrammerItemDelegate(ui->tableView));
    ui->tableView->horizontalHeader()->setFont(captionFont(ui->tableView->horizontalHeader()));
    ui->tableView->setColumnWidth(VekProgrammerModel::EnableColumn, EnableWidth);
    ui->tableView->setColumnWidth(VekProgrammerModel::SeriesColumn, 120);
    ui->tableView->setColumnWidth(VekProgrammerModel::VersionColumn, 130);
    ui->tableView->setColumnWidth(VekProgrammerModel::OperationColumn, 200);
    ui->tableView->setColumnWidth(VekProgrammerModel::FsFileColumn, 400);
    if (isDeepColorStyle())
        showDarkGrid();
    connectModel();
    connectForm();
    updateFrequency();
    DeviceConfigurations const* const catalogue = DeviceConfigurations::instance();
    if (catalogue->seriesList.isEmpty() || catalogue->devices.isEmpty())
        createProgrammerOutput(QStringLiteral(
            "Warn: The device catalogue programmer.json is missing, or has no devices."));
}

VekProgrammerWidget::~VekProgrammerWidget()
{
    if (m_running)
        WaitingTip::hideWaiting();
}

void VekProgrammerWidget::connectModel()
{
    using Widget = VekProgrammerWidget;
    connect(m_model, &VekProgrammerModel::deviceChanged, this, &Widget::ondeviceChanged);
    connect(m_model, &VekProgrammerModel::statusChanged, this,
            QOverload<ProgrammerStatus, QStringList const&>::of(&Widget::onStatusChanged));
    connect(m_model, &VekProgrammerModel::programPrint, this,
            QOverload<QString const&>::of(&Widget::createProgrammerOutput));
    connect(m_model, &VekProgrammerModel::CableError, this, &Widget::CableErrorBox);
    connect(m_model, &VekProgrammerModel::TargetEnable, this, &Widget::onTargetEnable);
}

void VekProgrammerWidget::connectForm()
{
    using Widget = VekProgrammerWidget;
    connect(ui->comboBoxFrequency, &QComboBox::currentTextChanged, this,
            &Widget::onFrequencyChanged);
    connect(ui->enableBox, &QCheckBox::stateChanged, this, &Widget::onEnableChange);
    connect(ui->tableView, &QTableView::doubleClicked, this, &Widget::onTableViewDoubleClkiced);
    connect(ui->searchDevice, &QPushButton::clicked, this, &Widget::on_searchDevice_clicked);
    connect(ui->downLoad, &QPushButton::clicked, this, &Widget::on_downLoad_clicked);
    connect(ui->addDevice, &QPushButton::clicked, this, &Widget::on_addDevice_clicked);
    connect(ui->rmDevice, &QPushButton::clicked, this, &Widget::on_rmDevice_clicked);
    connect(ui->moveUp, &QPushButton::clicked, this, &Widget::on_moveUp_clicked);
    connect(ui->moveDown, &QPushButton::clicked, this, &Widget::on_moveDown_clicked);
}

bool VekProgrammerWidget::isDeepColorStyle()
{
    QColor const base = QApplication::palette().color(QPalette::Base);
    return 0.299 * base.red() + 0.587 * base.green() + 0.114 * base.blue() < 100;
}

/// Lines that would vanish in a dark table.
void VekProgrammerWidget::showDarkGrid()
{
    QString const sections = QStringLiteral("QHeaderView::section {border: 1px solid white;}");
    ui->tableView->horizontalHeader()->setStyleSheet(sections);
    ui->tableView->verticalHeader()->setStyleSheet(sections);
    ui->tableView->setStyleSheet(QStringLiteral("gridline-color:white;"));
}

void VekProgrammerWidget::initData(QString const& series, QString const& device,
                                   QString const& fsFile)
{
    m_model->initData(series, device, fsFile);
}

bool VekProgrammerWidget::validate() const
{
    return m_model->validate();
}

QModelIndex VekProgrammerWidget::selectedIndex() const
{
    return ui->tableView->currentIndex();
}

/// What both kinds of run show until their status comes.
void VekProgrammerWidget::startRun()
{
    m_running = true;
    if (m_active)
        showTip();
    updateButtons();
}

/// What ends the tip is kept while the panel is not active, so that has none.
void VekProgrammerWidget::showTip()
{
    if (m_running && m_active)
        WaitingTip::showWaiting(window());
    else
        WaitingTip::hideWaiting();
}

/// A run may end without a status, when the target mark was taken away meanwhile.
void VekProgrammerWidget::onTargetEnable(bool enabled)
{
    if (!enabled)
        return;
    if (m_keptStatus == ProgrammerRunning)
        m_keptStatus = ProgrammerIdle;
    if (m_running && m_active)
        return onStatusChanged(ProgrammerIdle);
    m_running = false;
    updateButtons();
}

void VekProgrammerWidget::on_searchDevice_clicked()
{
    if (m_model->isBusy())
        return;
    startRun();
    m_model->scanDevices(m_cable, m_location);
}

void VekProgrammerWidget::on_downLoad_clicked()
{
    if (m_model->isBusy() || !m_model->checkSingleTarget())
        return;
    startRun();
    m_model->programFs(m_cable, m_location, m_frequency);
}

void VekProgrammerWidget::onEnableChange(int state)
{
    m_active = state == Qt::Checked;
    Q_EMIT enableChange(m_active);
    if (m_running)
        showTip();
    if (!m_active || !m_hasKept)
        return;
    QStringList messages;
    messages.swap(m_keptMessages);
    m_hasKept = false;
    onStatusChanged(m_keptStatus, messages);
}

void VekProgrammerWidget::on_addDevice_clicked()
{
    m_model->onAddNewDevice();
}

void VekProgrammerWidget::on_rmDevice_clicked()
{
    m_model->onRemoveDevice(selectedIndex());
}

void VekProgrammerWidget::on_moveUp_clicked()
{
    QModelIndex const from = selectedIndex();
    m_model->onMoveUp(from);
    followRow(from, from.row() - 1);
}

void VekProgrammerWidget::on_moveDown_clicked()
{
    QModelIndex const from = selectedIndex();
    m_model->onMoveDown(from);
    followRow(from, from.row() + 1);
}

/// A row that moved stays the current one, so that it can be moved on. The model's reset took it
/// from the table.
void VekProgrammerWidget::followRow(QModelIndex const& from, int row)
{
    if (from.isValid() && row >= 0 && row < m_model->rowCount())
        ui->tableView->setCurrentIndex(m_model->index(row, from.column()));
}

void VekProgrammerWidget::onStatusChanged(ProgrammerStatus status, QStringList const& messages)
{
    if (!m_active) {
        m_hasKept = true;
        m_keptStatus = status;
        m_keptMessages += messages;
        return;
    }
    if (status != m_status) {
        m_status = status;
        sendStatusSig();
    }
    if (DeviceItem* const active = m_model->activeDevice())
        active->status = status;
    m_running = status == ProgrammerRunning;
    if (!m_running)
        showTip();
    updateButtons();
    createProgrammerOutput(messages);
}

void VekProgrammerWidget::onStatusChanged(ProgrammerStatus status)
{
    onStatusChanged(status, QStringList());
}

void VekProgrammerWidget::sendStatusSig()
{
    Q_EMIT programStatusChanged(m_status == ProgrammerDownloaded, statusText(m_status));
}

void VekProgrammerWidget::onTableViewDoubleClkiced(QModelIndex const& index)
{
    DeviceItem* const row = m_model->device(index);
    if (!row || index.column() != VekProgrammerModel::OperationColumn || !row->operation)
        return;
    ViewKeeper const keeper(ui->tableView);
    // the table may get other rows while the dialog is open, so that works on a copy
    DeviceItem edited = *row;
    QPointer<DeviceConfigurationDlg> const dialog = new DeviceConfigurationDlg(&edited, this);
    bool const saved = dialog->exec() == QDialog::Accepted;
    if (!dialog)
        return; // gone with this panel
    QString const file = dialog->fileName();
    dialog->deleteLater();
    int const place = m_model->devices().indexOf(row);
    if (!saved || place < 0)
        return;
    row->operation = edited.operation;
    ui->tableView->viewport()->update();
    if (file != row->fsFile)
        m_model->setData(m_model->index(place, VekProgrammerModel::FsFileColumn), file);
}

void VekProgrammerWidget::updateIsBusy(bool busy)
{
    m_hostBusy = busy;
    updateButtons();
}

void VekProgrammerWidget::updateButtons()
{
    for (QPushButton* const button :
         {ui->searchDevice, ui->downLoad, ui->addDevice, ui->rmDevice, ui->moveUp, ui->moveDown})
        button->setEnabled(!m_running && !m_hostBusy);
}

void VekProgrammerWidget::updateCable(int cable)
{
    m_cable = cable;
    updateFrequency();
}

void VekProgrammerWidget::updateChannel(int location)
{
    m_location = location;
}

void VekProgrammerWidget::createProgrammerOutput(QStringList const& messages)
{
    int const lines = ui->textEdit->document()->maximumBlockCount();
    for (int i = qMax(0, messages.size() - lines); i < messages.size(); ++i)
        createProgrammerOutput(messages[i]);
}

void VekProgrammerWidget::createProgrammerOutput(QString const& message)
{
    QString stamp =
        QStringLiteral("[%1]").arg(QTime::currentTime().toString(QStringLiteral("HH:mm:ss")));
    bool const dark = isDeepColorStyle();
    QColor color;
    if (message.contains(QLatin1String("Error:"))) {
        color = dark ? 0xFF8080 : 0xC00000;
    } else if (message.contains(QLatin1String("Warn:"))) {
        color = dark ? 0xE0C040 : 0x7A5C00;
    } else {
        color = dark ? 0x9DB8FF : 0x0000C0;
        stamp += QStringLiteral("Info: ");
    }

    // by a cursor: what the programmer says is text, even when it looks like markup
    QTextCursor cursor(ui->textEdit->document());
    cursor.movePosition(QTextCursor::End);
    QTextCharFormat format;
    format.setForeground(color);
    if (!ui->textEdit->document()->isEmpty())
        cursor.insertBlock();
    cursor.insertText(stamp + message.left(LongestMessage), format);
    QScrollBar* const bar = ui->textEdit->verticalScrollBar();
    bar->setValue(bar->maximum());
}

void VekProgrammerWidget::onFrequencyChanged(QString const& frequency)
{
    m_frequency = frequency;
}

void VekProgrammerWidget::ondeviceChanged()
{
    updateFrequency();
}

void VekProgrammerWidget::updateFrequency()
{
    bool const hasFrequency = m_cable == 1 || m_cable == 2;
    ui->labelFrequency->setVisible(hasFrequency);
    ui->comboBoxFrequency->setVisible(hasFrequency);
    ui->labelFrequency->setEnabled(hasFrequency);
    ui->comboBoxFrequency->setEnabled(hasFrequency);

    bool fixed = false;
    for (DeviceItem const* const row : m_model->devices())
        fixed = fixed || hasFixedFrequency(row->deviceN);
    QString const chosen = ui->comboBoxFrequency->currentText();
    {
        QSignalBlocker const blocked(ui->comboBoxFrequency);
        ui->comboBoxFrequency->clear();
        ui->comboBoxFrequency->addItems(fixed ? QStringList{QStringLiteral("15MHz")}
                                              : allFrequencies());
        int const same = ui->comboBoxFrequency->findText(chosen);
        if (same >= 0)
            ui->comboBoxFrequency->setCurrentIndex(same);
    }
    onFrequencyChanged(ui->comboBoxFrequency->currentText());
}

void VekProgrammerWidget::CableErrorBox(QString const& text)
{
    showAlert({AlertKind::Critical, QStringLiteral("error"), text});
}

} // namespace VEK
