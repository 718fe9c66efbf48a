#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

/// One line of a description, taken apart.
struct InterfaceItem
{
    QString section;
    QString kind;
    int place = -1; // counted from 0; -1 where the order does not count
    QString text;
};

struct InterfaceParameter
{
    QString type;
    QString name;
};

/// The items of a description, in their order.
QVector<InterfaceItem> interfaceItems(const QString &description);

/// What a reader calls it: the name of a function, property or enumerator without types and values.
QString shortName(const InterfaceItem &item);
/// Equal for two items that built hosts take for the same one: parameter names and values do not count.
QString identity(const InterfaceItem &item);

/// Whether the item is a function with named parameters.
bool hasParameters(const InterfaceItem &item);
QVector<InterfaceParameter> parameters(const InterfaceItem &item);
QString resultType(const InterfaceItem &item);
/// The types of the parameters, in brackets.
QString parameterTypes(const InterfaceItem &item);
