#include "InterfaceComparison.h"

#include "InterfaceItem.h"

#include <algorithm>

namespace {

using Items = QVector<InterfaceItem>;

QString quoted(const QString &text)
{
    return QLatin1Char('\'') + text + QLatin1Char('\'');
}

QString called(const InterfaceItem &item)
{
    return item.kind + QLatin1Char(' ') + shortName(item);
}

QString placeWord(const InterfaceItem &item)
{
    return item.kind == QLatin1String("virtual") ? QStringLiteral("slot") : QStringLiteral("place");
}

QString whole(const InterfaceItem &item)
{
    const QString place
        = item.place < 0 ? QString() : QStringLiteral(" at %1 %2").arg(placeWord(item), QString::number(item.place));
    return item.kind + QLatin1Char(' ') + item.text + place + QStringLiteral(" of ") + item.section;
}

bool sameGroup(const InterfaceItem &one, const InterfaceItem &other)
{
    return one.section == other.section && one.kind == other.kind;
}

class Comparison
{
public:
    Comparison(Items keptItems, Items currentItems)
        : kept(std::move(keptItems))
        , current(std::move(currentItems))
    {
    }

    QStringList differences()
    {
        const auto sameIdentity
            = [](const InterfaceItem &one, const InterfaceItem &other) { return identity(one) == identity(other); };
        pairUp(sameIdentity, [this](const auto &was, const auto &is) { compareSame(was, is); });
        // What is left has changed: first those that kept the name, then those that kept the place.
        const auto sameName
            = [](const InterfaceItem &one, const InterfaceItem &other) { return shortName(one) == shortName(other); };
        pairUp(sameName, [this](const auto &was, const auto &is) { compareTypes(was, is); });
        const auto samePlace = [](const InterfaceItem &one, const InterfaceItem &other) {
            return one.place >= 0 && one.place == other.place;
        };
        pairUp(samePlace, [this](const auto &was, const auto &is) { reportRename(was, is); });
        for (const InterfaceItem &item : qAsConst(kept))
            say(QStringLiteral("removed: ") + whole(item));
        for (const InterfaceItem &item : qAsConst(current))
            say(QStringLiteral("added: ") + whole(item));
        return sentences;
    }

private:
    // Hands each pair that belongs together to the receiver and takes it off both lists.
    template <class Predicate, class Receiver>
    void pairUp(Predicate belongTogether, Receiver receive)
    {
        Items alone;
        for (const InterfaceItem &was : qAsConst(kept)) {
            const auto partner = std::find_if(current.begin(), current.end(), [&](const InterfaceItem &is) {
                return sameGroup(was, is) && belongTogether(was, is);
            });
            if (partner == current.end()) {
                alone.append(was);
                continue;
            }
            receive(was, *partner);
            current.erase(partner);
        }
        kept = alone;
    }

    void compareSame(const InterfaceItem &was, const InterfaceItem &is)
    {
        reportMove(was, is);
        if (was.text == is.text)
            return;
        if (hasParameters(was))
            compareNames(was, is);
        else
            say(QStringLiteral("%1: was \"%2\", is \"%3\"").arg(called(was), was.text, is.text));
    }

    void reportMove(const InterfaceItem &was, const InterfaceItem &is)
    {
        if (was.place != is.place)
            say(QStringLiteral("%1 moved from %2 %3 to %4")
                    .arg(called(was), placeWord(was), QString::number(was.place), QString::number(is.place)));
    }

    void compareNames(const InterfaceItem &was, const InterfaceItem &is)
    {
        reportResult(was, is);
        const auto before = parameters(was);
        const auto after = parameters(is);
        for (int i = 0; i < before.size(); ++i) {
            if (before.at(i).name != after.at(i).name)
                say(QStringLiteral("%1: parameter %2 renamed to %3")
                        .arg(called(was), quoted(before.at(i).name), quoted(after.at(i).name)));
        }
    }

    void compareTypes(const InterfaceItem &was, const InterfaceItem &is)
    {
        reportMove(was, is);
        reportResult(was, is);
        say(QStringLiteral("%1 takes %2 instead of %3").arg(called(was), parameterTypes(is), parameterTypes(was)));
    }

    void reportResult(const InterfaceItem &was, const InterfaceItem &is)
    {
        if (resultType(was) != resultType(is))
            say(QStringLiteral("%1 returns %2 instead of %3").arg(called(was), resultType(is), resultType(was)));
    }

    void reportRename(const InterfaceItem &was, const InterfaceItem &is)
    {
        say(QStringLiteral("%1 at %2 %3 gave way to \"%4\"")
                .arg(called(was), placeWord(was), QString::number(was.place), is.text));
    }

    void say(const QString &sentence) { sentences.append(sentence); }

    Items kept;
    Items current;
    QStringList sentences;
};

} // namespace

QStringList interfaceDifferences(const QString &kept, const QString &current)
{
    return Comparison(interfaceItems(kept), interfaceItems(current)).differences();
}
