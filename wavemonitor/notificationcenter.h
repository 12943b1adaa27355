#pragma once

#include <QHash>
#include <QList>
#include <QMultiMap>
#include <QObject>
#include <QString>

#include <memory>

namespace WaveMonitor {

/// What a notification is about. Types that announce a change are sent before it, types that report
/// one are posted after it.
enum NotificationType : quint32 {
    Invalid = 1, ///< Refused by the hub.
    ZoomAboutToChange = 2,
    ZoomChanged = 3,
    Reserved4 = 4, ///< Observed, never published.
    DataFormatChanged = 5,
    MarkerAboutToBeCreated = 6,
    MarkerCreated = 7,
    ActiveMarkerAboutToChange = 8,
    ActiveMarkerChanged = 9,
    MarkerAboutToBeRemoved = 10,
    MarkerRemoved = 11,
    HorizontalScrollChanged = 12,
    RowCollapsed = 13,
    RowExpanded = 14,
    RemoveWaveItems = 15,    ///< For hosts: take all wave items out of the scene.
    RearrangeWaveItems = 16, ///< For hosts: lay the wave items out again.
    SelectionChanged = 18,
    LayoutChanged = 20, ///< Rows, data or the trigger changed: the wave items must be rebuilt.
    Reserved21 = 21,    ///< Observed, never published.
    WaveColorChanged = 22
};

/// A plain note without payload: observers read what changed from the sender's Qt properties. Made
/// with `new` by the publisher, and the hub's from the moment it is handed over.
struct Notification
{
    Notification(NotificationType type, QObject* sender) : type(type), sender(sender) {}
    Notification(Notification const& other) = default;
    explicit Notification(Notification const* other) : Notification(*other) {}
    Notification& operator=(Notification const& other) = default;

    /// Whether the sender is a part of the monitor of that domain. One without the property
    /// "domain" counts as of domain 0; without any sender there is nothing to read from.
    bool isFrom(quint64 domain) const;

    NotificationType type;
    QObject* sender; ///< Not owned.
    QString text;    ///< Empty in all notes of this library.
};

/// The process-wide hub that keeps the parts of all monitors in step. It calls the invokable method
/// `handleEvents(Notification*)` of the observers of a note's type, the most recently registered
/// first. Declare that method inside this namespace or with a using directive: it is found by its
/// name, and a qualified argument type would be another name. An observer without it is passed
/// over.
///
/// Everything happens in the GUI thread. A delivery runs over a copy of the list of observers, so
/// they may come and go meanwhile. Entries of a deleted observer vanish, and what is left to
/// deliver of a note when its sender is deleted is dropped.
class NotificationCenter : public QObject
{
    Q_OBJECT

public:
    /// The only instance, made on first use.
    static NotificationCenter* shared();
    ~NotificationCenter() override;

    /// Adds an entry; registering twice makes two. Null is ignored.
    void registerObserver(QObject* observer, NotificationType type);
    void registerObserver(QObject* observer, QList<NotificationType> const& types);

    /// Removes all entries of the observer, or those of the given types. Notes that are queued for
    /// it already still arrive.
    void unregisterObserver(QObject* observer);
    void unregisterObserver(QObject* observer, NotificationType type);
    void unregisterObserver(QObject* observer, QList<NotificationType> const& types);

    /// Delivers to every observer of the type but `sender`, and deletes the note before it returns.
    void sendEvent(Notification* note, QObject* sender);

    /// The same from the event loop: the note is deleted after its last handler. One of type
    /// Invalid is deleted at once.
    void postEvent(Notification* note, QObject* sender);

    /// Deletes the note; null is ignored.
    Q_INVOKABLE void deleteEventLater(Notification* note);

private:
    NotificationCenter();

    QList<QObject*> observersFor(NotificationType type, QObject const* sender) const;

    QMultiMap<NotificationType, QObject*> m_observers;
    QHash<Notification*, std::shared_ptr<Notification>> m_posted;
};

} // namespace WaveMonitor
