#include "workbench/triggerline.h"

#include "trigger/trigger.h"
#include "triggerui/dynamicconfigwidget.h"
#include "triggerui/matchunitmodel.h"
#include "workbench/triggernote.h"

#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QVBoxLayout>

using namespace VEK;

TriggerLine::TriggerLine(SxCore& core, DynamicConfigWidget& panel, QWidget* parent)
    : QWidget(parent), m_core(core), m_panel(panel), m_line(new QLineEdit(this)),
      m_note(makeNote(QStringLiteral("triggerNote"), this))
{
    auto* const label = new QLabel(QStringLiteral("&Trigger as text:"), this);
    label->setBuddy(m_line);
    m_line->setObjectName(QStringLiteral("triggerText"));
    m_line->setToolTip(
        QStringLiteral("Such as: addr in 0x50..0x57 & valid rises. Return takes it."));
    auto* const layout = new QVBoxLayout(this);
    for (QWidget* const widget : {static_cast<QWidget*>(label), static_cast<QWidget*>(m_line),
                                  static_cast<QWidget*>(m_note)})
        layout->addWidget(widget);
    connect(m_line, &QLineEdit::textEdited, this, &TriggerLine::check);
    connect(m_line, &QLineEdit::returnPressed, this, &TriggerLine::take);
    // what a user edits; a reset is the panel's own doing, also while it goes
    for (QAbstractItemModel const* const model :
         {static_cast<QAbstractItemModel const*>(m_panel.matchUnitModel()),
          static_cast<QAbstractItemModel const*>(m_panel.findChild<QListWidget*>()->model())})
        connect(model, &QAbstractItemModel::dataChanged, this, &TriggerLine::follow);
    follow();
}

/// What the panel has not written into the core yet belongs to the trigger too.
void TriggerLine::follow()
{
    if (m_isTaking)
        return;
    m_panel.save();
    m_line->setText(triggerText(m_core));
    m_line->home(false); // a long one shows its beginning
    showNote(*m_note, triggerNotes(m_core).join(QLatin1Char('\n')), false);
}

void TriggerLine::check(QString const& text)
{
    CompiledTrigger const trigger = compileTrigger(text, m_core);
    bool const isOk = trigger.isOk();
    showNote(*m_note,
             isOk ? trigger.notes.join(QLatin1Char('\n')) : errorNote(text, trigger.errors), !isOk);
}

void TriggerLine::take()
{
    m_isTaking = true;
    m_panel.save();
    CompiledTrigger const trigger = compileTrigger(m_line->text(), m_core);
    if (trigger.isOk()) {
        applyTrigger(trigger, m_core);
        m_panel.setSxCore(&m_core);
    }
    m_isTaking = false;
    if (trigger.isOk())
        follow();
    else
        check(m_line->text());
}
