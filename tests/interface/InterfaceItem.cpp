#include "InterfaceItem.h"

namespace {

InterfaceItem itemFrom(const QString &line, const QString &section)
{
    const int blank = line.indexOf(QLatin1Char(' '));
    InterfaceItem item{section, line.left(blank), -1, line.mid(blank + 1)};
    const int colon = item.text.indexOf(QLatin1String(": "));
    bool isNumber = false;
    const int place = item.text.left(colon).toInt(&isNumber);
    if (colon > 0 && isNumber) {
        item.place = place;
        item.text = item.text.mid(colon + 2);
    }
    return item;
}

// A comma between angle brackets belongs to a type.
QStringList splitParameters(const QString &list)
{
    QStringList parts;
    int depth = 0;
    int start = 0;
    for (int i = 0; i < list.size(); ++i) {
        const QChar sign = list.at(i);
        depth += int(sign == QLatin1Char('<')) - int(sign == QLatin1Char('>'));
        if (sign == QLatin1Char(',') && depth == 0) {
            parts.append(list.mid(start, i - start).trimmed());
            start = i + 1;
        }
    }
    const QString last = list.mid(start).trimmed();
    return last.isEmpty() ? parts : parts << last;
}

QString parameterList(const QString &text)
{
    const int open = text.indexOf(QLatin1Char('('));
    return text.mid(open + 1, text.lastIndexOf(QLatin1Char(')')) - open - 1);
}

InterfaceParameter parameterFrom(const QString &text)
{
    const int blank = text.lastIndexOf(QLatin1Char(' '));
    return blank < 0 ? InterfaceParameter{text, QString()} : InterfaceParameter{text.left(blank), text.mid(blank + 1)};
}

// "void uploadFinished(" gives "uploadFinished", "QString currentUser, read only" gives "currentUser".
QString lastWordBefore(const QString &text, QChar end)
{
    const QString head = text.section(end, 0, 0);
    return head.section(QLatin1Char(' '), -1);
}

bool hasValue(const InterfaceItem &item)
{
    return item.kind == QLatin1String("enumerator") || item.kind == QLatin1String("field")
           || item.kind == QLatin1String("size");
}

} // namespace

QVector<InterfaceItem> interfaceItems(const QString &description)
{
    QVector<InterfaceItem> items;
    QString section;
    for (const QString &line : description.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        if (line.startsWith(QLatin1Char('[')))
            section = line.mid(1, line.size() - 2);
        else
            items.append(itemFrom(line, section));
    }
    return items;
}

bool hasParameters(const InterfaceItem &item)
{
    return item.kind == QLatin1String("signal") || item.kind == QLatin1String("method");
}

QVector<InterfaceParameter> parameters(const InterfaceItem &item)
{
    QVector<InterfaceParameter> list;
    for (const QString &text : splitParameters(parameterList(item.text)))
        list.append(parameterFrom(text));
    return list;
}

QString resultType(const InterfaceItem &item)
{
    return item.text.left(item.text.indexOf(shortName(item) + QLatin1Char('('))).trimmed();
}

QString parameterTypes(const InterfaceItem &item)
{
    QStringList types;
    for (const InterfaceParameter &parameter : parameters(item))
        types.append(parameter.type);
    return QLatin1Char('(') + types.join(QLatin1String(", ")) + QLatin1Char(')');
}

QString shortName(const InterfaceItem &item)
{
    if (hasParameters(item))
        return lastWordBefore(item.text, QLatin1Char('('));
    if (item.kind == QLatin1String("property"))
        return lastWordBefore(item.text, QLatin1Char(','));
    return hasValue(item) ? item.text.section(QLatin1String(" = "), 0, 0) : item.text;
}

QString identity(const InterfaceItem &item)
{
    return hasParameters(item) ? shortName(item) + parameterTypes(item) : shortName(item);
}
