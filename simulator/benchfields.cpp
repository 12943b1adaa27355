#include "simulator/benchfields.h"

#include <QJsonArray>

#include <cmath>

namespace VEK::Simulator {

QJsonValue BenchFields::take(char const* key, QJsonValue::Type type, char const* typeName)
{
    QString const name = QString::fromLatin1(key);
    m_known.append(name);
    QJsonValue const value = m_object.value(name);
    if (value.isUndefined() || value.type() == type)
        return value;
    fail(QStringLiteral("\"%1\" must be %2").arg(name, QString::fromLatin1(typeName)));
    return QJsonValue(QJsonValue::Undefined);
}

QString BenchFields::text(char const* key)
{
    return take(key, QJsonValue::String, "a text").toString();
}

bool BenchFields::flag(char const* key)
{
    return take(key, QJsonValue::Bool, "true or false").toBool();
}

int BenchFields::integer(char const* key, int missing, int low, int high)
{
    QJsonValue const value = take(key, QJsonValue::Double, "a number");
    if (value.isUndefined())
        return missing;
    double const number = value.toDouble();
    if (number >= low && number <= high && std::floor(number) == number)
        return int(number);
    fail(QStringLiteral("\"%1\" must be a whole number from %2 to %3")
             .arg(QString::fromLatin1(key))
             .arg(low)
             .arg(high));
    return missing;
}

QString BenchFields::choice(char const* key, QStringList const& words, QString const& missing)
{
    QJsonValue const value = take(key, QJsonValue::String, "a text");
    QString const word = value.toString(missing);
    if (!words.contains(word))
        fail(QStringLiteral("\"%1\" must be one of: %2")
                 .arg(QString::fromLatin1(key), words.join(QStringLiteral(", "))));
    return word;
}

QHash<QString, QString> BenchFields::texts(char const* key)
{
    QHash<QString, QString> texts;
    QJsonObject const members = take(key, QJsonValue::Object, "an object").toObject();
    for (auto it = members.begin(); it != members.end(); ++it) {
        if (!it.value().isString())
            fail(QStringLiteral("\"%1\" must hold texts only").arg(QString::fromLatin1(key)));
        texts.insert(it.key(), it.value().toString());
    }
    return texts;
}

BenchFields BenchFields::object(char const* key)
{
    QJsonObject const member = take(key, QJsonValue::Object, "an object").toObject();
    return BenchFields(member, m_where + QString::fromLatin1(key) + QLatin1Char('.'), m_error);
}

std::list<BenchFields> BenchFields::objects(char const* key)
{
    std::list<BenchFields> list;
    QJsonArray const members = take(key, QJsonValue::Array, "a list").toArray();
    for (int i = 0; i < members.size(); ++i) {
        QString const where =
            QStringLiteral("%1%2[%3].").arg(m_where, QString::fromLatin1(key)).arg(i);
        if (!members.at(i).isObject())
            fail(QStringLiteral("\"%1\" must hold objects only").arg(QString::fromLatin1(key)));
        list.emplace_back(members.at(i).toObject(), where, m_error);
    }
    return list;
}

void BenchFields::fail(QString const& what)
{
    if (!m_error.isEmpty())
        return;
    QString const where = m_where.chopped(m_where.isEmpty() ? 0 : 1);
    m_error = where.isEmpty() ? what : QStringLiteral("%1: %2").arg(where, what);
}

void BenchFields::close()
{
    QStringList const keys = m_object.keys();
    for (QString const& key : keys) {
        if (!m_known.contains(key))
            fail(QStringLiteral("there is no \"%1\" here").arg(key));
    }
}

} // namespace VEK::Simulator
