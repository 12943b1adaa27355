#pragma once

#include <QHash>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <list>

namespace VEK::Simulator {

/// Reads the members of one JSON object with their types checked. The first thing that is wrong
/// goes to the common error text, with the member's path; then defaults come back.
class BenchFields
{
public:
    /// `where` is the object's path for messages, empty for the outermost. `error` must outlive
    /// this object.
    BenchFields(QJsonObject const& object, QString const& where, QString& error)
        : m_object(object), m_where(where), m_error(error)
    {}

    bool has(char const* key) const { return m_object.contains(QLatin1String(key)); }

    QString text(char const* key);
    bool flag(char const* key);
    /// A whole number from `low` to `high`; `missing` when it is not there.
    int integer(char const* key, int missing, int low, int high);
    /// One of the words of a list, `missing` when it is not there; an empty `missing` makes the
    /// member needed.
    QString choice(char const* key, QStringList const& words, QString const& missing);
    /// An object whose members are texts.
    QHash<QString, QString> texts(char const* key);
    /// An empty object when it is not there.
    BenchFields object(char const* key);
    /// A list of objects.
    std::list<BenchFields> objects(char const* key);

    void fail(QString const& what);
    /// Fails for members that nobody asked for.
    void close();

private:
    QJsonValue take(char const* key, QJsonValue::Type type, char const* typeName);

    QJsonObject m_object;
    QString m_where;
    QString& m_error;
    QStringList m_known;
};

} // namespace VEK::Simulator
