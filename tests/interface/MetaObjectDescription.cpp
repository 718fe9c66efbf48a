#include "InterfaceDescription.h"

#include <NQKorvoWeb/KorvoWebApi.h>
#include <NQKorvoWeb/KorvoWebLibrary.h>

#include <QtCore/QMetaEnum>
#include <QtCore/QMetaMethod>
#include <QtCore/QMetaProperty>
#include <QtCore/QMetaType>
#include <QtCore/QTextStream>

namespace {

QString parameterText(const QByteArray &type, const QByteArray &name)
{
    return QString::fromLatin1(name.isEmpty() ? type : type + ' ' + name);
}

QString methodText(const QMetaMethod &method)
{
    QStringList parameters;
    for (int i = 0; i < method.parameterCount(); ++i)
        parameters.append(parameterText(method.parameterTypes().at(i), method.parameterNames().at(i)));
    return QStringLiteral("%1 %2(%3)")
        .arg(QLatin1String(method.typeName()), QString::fromLatin1(method.name()),
             parameters.join(QLatin1String(", ")));
}

QString propertyText(const QMetaProperty &property)
{
    return QStringLiteral("%1 %2, %3, notify %4")
        .arg(QLatin1String(property.typeName()), QLatin1String(property.name()),
             property.isWritable() ? QStringLiteral("writable") : QStringLiteral("read only"),
             QString::fromLatin1(property.notifySignal().name()));
}

void writeEnumerators(QTextStream &out, const QMetaEnum &type)
{
    for (int i = 0; i < type.keyCount(); ++i)
        out << "enumerator " << type.name() << "::" << type.key(i) << " = " << type.value(i) << '\n';
}

void writeClass(QTextStream &out, const QMetaObject &meta)
{
    out << "[class " << meta.className() << " : " << meta.superClass()->className() << "]\n";
    for (int i = meta.enumeratorOffset(); i < meta.enumeratorCount(); ++i)
        writeEnumerators(out, meta.enumerator(i));
    for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i)
        out << "property " << i - meta.propertyOffset() << ": " << propertyText(meta.property(i)) << '\n';
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        out << (method.methodType() == QMetaMethod::Signal ? "signal " : "method ") << i - meta.methodOffset() << ": "
            << methodText(method) << '\n';
    }
}

void writeRegisteredTypes(QTextStream &out)
{
    int id = QMetaType::User;
    while (QMetaType::isRegistered(id)) // by Qt itself
        ++id;
    Korvo::Web::KorvoWebLibrary::initialize();
    out << "[registered types]\n";
    for (; QMetaType::isRegistered(id); ++id)
        out << "type " << QMetaType::typeName(id) << '\n';
}

} // namespace

QString metaObjectDescription()
{
    QString text;
    QTextStream out(&text);
    writeClass(out, Korvo::Web::KorvoWebApi::staticMetaObject);
    writeRegisteredTypes(out);
    out.flush();
    return text;
}
