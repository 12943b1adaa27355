#include "wavemonitor/notificationcenter.h"

#include "results/dataformatter.h"
#include "wavemonitor/mlog.h"
#include "wavemonitor/timeslider.h"

#include <QMetaMethod>
#include <QMetaType>
#include <QPointer>

Q_DECLARE_METATYPE(WaveMonitor::Notification*)
Q_DECLARE_METATYPE(WaveMonitor::DataFormat::Type)

namespace WaveMonitor {

namespace {

void callHandler(QObject* observer, Notification* note)
{
    // Looked up first: invoking by name would complain on standard error where there is none.
    QMetaObject const* const meta = observer->metaObject();
    int const method = meta->indexOfMethod("handleEvents(Notification*)");
    if (method >= 0)
        meta->method(method).invoke(observer, Qt::DirectConnection, Q_ARG(Notification*, note));
}

/// Whether the sender, which observers read, is still there. A note may have none from the start.
class SenderGuard
{
public:
    explicit SenderGuard(Notification const* note)
        : m_sender(note->sender), m_hasSender(note->sender != nullptr)
    {}

    bool isAlive() const { return !m_hasSender || m_sender; }

private:
    QPointer<QObject> m_sender;
    bool m_hasSender;
};

} // namespace

bool Notification::isFrom(quint64 domain) const
{
    return sender && sender->property("domain").toULongLong() == domain;
}

NotificationCenter::NotificationCenter()
{
    qRegisterMetaType<Notification*>();
    qRegisterMetaType<Notification*>("Notification*");
    qRegisterMetaType<QList<TimeSliderData*>>();
    qRegisterMetaType<QList<TimeSliderData*>>("QList<TimeSliderData*>");
    // as RulerView's property spells it
    qRegisterMetaType<TimeSliderData*>("TimeSliderData*");
    qRegisterMetaType<DataFormat::Type>();
}

NotificationCenter::~NotificationCenter() = default;

NotificationCenter* NotificationCenter::shared()
{
    static NotificationCenter center;
    return &center;
}

void NotificationCenter::registerObserver(QObject* observer, NotificationType type)
{
    if (!observer)
        return;
    m_observers.insert(type, observer);
    connect(observer, &QObject::destroyed, this,
            qOverload<QObject*>(&NotificationCenter::unregisterObserver), Qt::UniqueConnection);
}

void NotificationCenter::registerObserver(QObject* observer, QList<NotificationType> const& types)
{
    for (NotificationType const type : types)
        registerObserver(observer, type);
}

void NotificationCenter::unregisterObserver(QObject* observer)
{
    for (auto entry = m_observers.begin(); entry != m_observers.end();)
        entry = entry.value() == observer ? m_observers.erase(entry) : std::next(entry);
}

void NotificationCenter::unregisterObserver(QObject* observer, NotificationType type)
{
    m_observers.remove(type, observer);
}

void NotificationCenter::unregisterObserver(QObject* observer, QList<NotificationType> const& types)
{
    for (NotificationType const type : types)
        unregisterObserver(observer, type);
}

QList<QObject*> NotificationCenter::observersFor(NotificationType type, QObject const* sender) const
{
    QList<QObject*> observers = m_observers.values(type); // the latest entry first
    observers.removeAll(const_cast<QObject*>(sender));
    return observers;
}

void NotificationCenter::sendEvent(Notification* note, QObject* sender)
{
    if (!note)
        return;
    std::unique_ptr<Notification> const owner(note);
    if (note->type == Invalid) {
        MLog() << "";
        return;
    }
    SenderGuard const guard(note);
    QList<QPointer<QObject>> observers;
    for (QObject* observer : observersFor(note->type, sender))
        observers.append(observer);
    for (QPointer<QObject> const& observer : qAsConst(observers)) {
        if (observer && guard.isAlive())
            callHandler(observer, note);
    }
}

void NotificationCenter::postEvent(Notification* note, QObject* sender)
{
    if (!note)
        return;
    std::shared_ptr<Notification> const shared(note);
    if (note->type == Invalid) {
        MLog() << "";
        return;
    }
    SenderGuard const guard(note);
    for (QObject* observer : observersFor(note->type, sender)) {
        // Each call holds the note, since a handler may run an event loop of its own. Qt drops
        // the call when the observer goes.
        QMetaObject::invokeMethod(
            observer,
            [observer, shared, guard] {
                if (guard.isAlive())
                    callHandler(observer, shared.get());
            },
            Qt::QueuedConnection);
    }
    m_posted.insert(note, shared);
    QMetaObject::invokeMethod(
        this, [this, note] { deleteEventLater(note); }, Qt::QueuedConnection);
}

void NotificationCenter::deleteEventLater(Notification* note)
{
    if (!m_posted.remove(note))
        delete note;
}

} // namespace WaveMonitor
