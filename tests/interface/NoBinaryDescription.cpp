#include "InterfaceDescription.h"

std::optional<QString> binaryDescription(const QString &)
{
    return QString();
}
