#include "wavemonitor/tree/treecontextmenu.h"

#include "results/dataformatter.h"
#include "wavemonitor/tree/layoutnode.h"

#include <QAction>
#include <QActionGroup>
#include <QMenu>
#include <QPixmap>

#include <algorithm>
#include <optional>

namespace WaveMonitor {

namespace {

struct WaveColor
{
    char const* text;
    int rgb;
};

constexpr WaveColor WaveColors[] = {
    {"Green", 0x00ff00},      {"Light Green", 0x90ee90}, {"Dark Red", 0xce0000},
    {"Red", 0xff0000},        {"Orange", 0xffa500},      {"Yellow", 0xffff00},
    {"Light Blue", 0x87cefa}, {"Blue", 0x0000ff},        {"Dark Blue", 0x00008b},
    {"Purple", 0x800080},
};

QIcon colorIcon(int rgb)
{
    QPixmap pixmap(15, 10);
    pixmap.fill(QColor(QRgb(rgb)));
    return QIcon(pixmap);
}

bool isDivider(QModelIndex const& index)
{
    return SignalTreeView::nodeAt(index)->type == LayoutNode::Divider;
}

bool isInBus(QModelIndex const& index)
{
    return index.parent().isValid();
}

bool hasChildren(QModelIndex const& index)
{
    return index.model()->rowCount(index) > 0;
}

/// What `value` gives for all rows alike; nothing if they differ or there are none.
template <typename Value>
std::optional<int> agreed(QList<QModelIndex> const& rows, Value value)
{
    std::optional<int> common;
    for (QModelIndex const& row : rows) {
        int const own = value(SignalTreeView::nodeAt(row));
        if (common && *common != own)
            return std::nullopt;
        common = own;
    }
    return common;
}

void checkOnly(QActionGroup* group, std::optional<int> value)
{
    for (QAction* action : group->actions())
        action->setChecked(value && action->data().toInt() == *value);
}

} // namespace

QString waveColorText(int rgb)
{
    for (WaveColor const& color : WaveColors) {
        if (color.rgb == rgb)
            return SignalTreeView::tr(color.text);
    }
    return SignalTreeView::tr("Strange color");
}

SignalTreeView::ContextMenuDelegate::ContextMenuDelegate(SignalTreeView* view)
    : m_view(view), m_ungroup(addAction(tr("Ungroup"), &SignalTreeView::onUngroupBus)),
      m_group(addAction(tr("Group"), &SignalTreeView::onGroupBus)),
      m_rename(addAction(tr("Rename"), &SignalTreeView::onRename)),
      m_restoreName(addAction(tr("Restore Original Name"), &SignalTreeView::onRestoreOrgName)),
      m_reverse(addAction(tr("Reverse"), &SignalTreeView::onReverse)),
      m_newDivider(addAction(tr("New Divider"), &SignalTreeView::onNewDivider)),
      m_deleteDivider(addAction(tr("Delete Divider"), &SignalTreeView::onDeleteDivider)),
      m_separator(new QAction(view))
{
    m_separator->setSeparator(true);
    makeNameForms();
    makeFormats();
    makeColors();
}

QAction* SignalTreeView::ContextMenuDelegate::addAction(QString const& text, Slot slot)
{
    auto* action = new QAction(text, m_view);
    QObject::connect(action, &QAction::triggered, m_view, slot);
    return action;
}

QAction* SignalTreeView::ContextMenuDelegate::addChoice(QMenu* menu, QActionGroup* group,
                                                        QString const& text, int value)
{
    QAction* action = menu->addAction(text);
    action->setCheckable(true);
    action->setData(value);
    group->addAction(action);
    return action;
}

void SignalTreeView::ContextMenuDelegate::makeNameForms()
{
    m_nameForms = new QActionGroup(m_view);
    m_longName = addAction(tr("Long Name"), &SignalTreeView::onLongName);
    m_shortName = addAction(tr("Short Name"), &SignalTreeView::onShortName);
    for (QAction* action : {m_longName, m_shortName}) {
        action->setCheckable(true);
        m_nameForms->addAction(action);
    }
    m_longName->setData(int(LayoutNode::LongName));
    m_shortName->setData(int(LayoutNode::ShortName));
}

void SignalTreeView::ContextMenuDelegate::makeFormats()
{
    m_formatMenu = new QMenu(tr("Format"), m_view);
    m_formats = new QActionGroup(m_view);
    for (int type = DataFormat::Binary; type <= DataFormat::RowHeightSetting; ++type) {
        if (type == DataFormat::UnsignedBarChart)
            m_formatMenu->addSeparator();
        addChoice(m_formatMenu, m_formats, DataFormat::typeDescription(DataFormat::Type(type)),
                  type);
    }
    QObject::connect(m_formats, &QActionGroup::triggered, m_view, [view = m_view](QAction* action) {
        view->onDataFormatSetted(action->data().toInt());
    });
}

void SignalTreeView::ContextMenuDelegate::makeColors()
{
    m_colorMenu = new QMenu(tr("Color"), m_view);
    m_colors = new QActionGroup(m_view);
    for (WaveColor const& color : WaveColors)
        addChoice(m_colorMenu, m_colors, waveColorText(color.rgb), color.rgb)
            ->setIcon(colorIcon(color.rgb));
    QObject::connect(m_colors, &QActionGroup::triggered, m_view, [view = m_view](QAction* action) {
        view->onWaveColorSetted(action->data().toInt());
    });
}

QList<QAction*> SignalTreeView::ContextMenuDelegate::actions()
{
    QList<QModelIndex> const rows = m_view->selectedRowList();
    enable(rows);
    check(rows);
    return {m_ungroup,
            m_group,
            m_rename,
            m_restoreName,
            m_reverse,
            m_longName,
            m_shortName,
            m_newDivider,
            m_deleteDivider,
            m_separator,
            m_formatMenu->menuAction(),
            m_colorMenu->menuAction()};
}

void SignalTreeView::ContextMenuDelegate::enable(QList<QModelIndex> const& rows)
{
    int const dividers = int(std::count_if(rows.begin(), rows.end(), isDivider));
    int const others = rows.size() - dividers;
    bool const anyInBus = std::any_of(rows.begin(), rows.end(), isInBus);
    bool const anyBus = std::any_of(rows.begin(), rows.end(), hasChildren);
    bool const single = rows.size() == 1;

    m_ungroup->setEnabled(anyBus);
    m_group->setEnabled(!anyInBus && rows.size() > 1 && (others > 1 || (others == 1 && anyBus)));
    m_rename->setEnabled(single);
    for (QAction* action : {m_restoreName, m_longName, m_shortName})
        action->setEnabled(others > 0);
    m_reverse->setEnabled(single && anyBus);
    m_deleteDivider->setEnabled(dividers > 0);
    m_formatMenu->menuAction()->setEnabled(others > 0 || rows.isEmpty());
    m_colorMenu->menuAction()->setEnabled(!rows.isEmpty());
    for (QAction* action : m_formats->actions()) {
        if (action->data().toInt() >= DataFormat::UnsignedBarChart)
            action->setEnabled(anyBus);
    }
}

void SignalTreeView::ContextMenuDelegate::check(QList<QModelIndex> const& rows)
{
    QList<QModelIndex> buses; // only they have a format of their own
    std::copy_if(rows.begin(), rows.end(), std::back_inserter(buses), hasChildren);

    checkOnly(m_nameForms, agreed(rows, [](LayoutNode* node) { return node->nameType; }));
    checkOnly(m_formats,
              agreed(buses, [](LayoutNode* node) { return int(node->formatter->formatType()); }));
    checkOnly(m_colors, agreed(rows, [](LayoutNode* node) { return node->color; }));
}

} // namespace WaveMonitor
