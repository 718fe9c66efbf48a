#include "InterfaceDescription.h"

#include <NQKorvoWeb/ProjectInfo.h>
#include <NQKorvoWeb/SingleMediaFileLinkData.h>
#include <NQKorvoWeb/UploadStatusInfo.h>

#include <QtCore/QDir>
#include <QtCore/QLibrary>
#include <QtCore/QProcess>
#include <QtCore/QSet>
#include <QtCore/QTextStream>
#include <QtCore/QVector>

#include <cxxabi.h>
#include <dlfcn.h>

#include <cstddef>
#include <cstdlib>
#include <memory>

namespace {

struct Symbol
{
    QByteArray name;
    quint64 bytes = 0;
};

QString readable(const QByteArray &name)
{
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> text(
        abi::__cxa_demangle(name.constData(), nullptr, nullptr, &status), &std::free);
    return status == 0 ? QString::fromLatin1(text.get()) : QString::fromLatin1(name);
}

// Lines of nm: address, size, kind, name.
QVector<Symbol> exportedSymbols(const QString &libraryFile)
{
    QProcess nm;
    nm.start(QStringLiteral("nm"), {QStringLiteral("--dynamic"), QStringLiteral("--defined-only"),
                                    QStringLiteral("--print-size"), QStringLiteral("--format=posix"), libraryFile});
    if (!nm.waitForFinished() || nm.exitCode() != 0)
        return {};
    QVector<Symbol> symbols;
    for (const QByteArray &line : nm.readAllStandardOutput().split('\n')) {
        const QByteArrayList fields = line.split(' ');
        if (fields.size() >= 4)
            symbols.append({fields.at(0), fields.at(3).toULongLong(nullptr, 16)});
    }
    return symbols;
}

// Functions of Qt that do the same may share one address, and then one name stands for all of them: only the class
// counts. A destructor has two slots that read alike.
QString slotText(const QByteArray &name)
{
    const QString text = readable(name);
    if (!text.startsWith(QLatin1String("Korvo::")))
        return QStringLiteral("(inherited from %1)").arg(text.section(QLatin1String("::"), 0, 0));
    return name.endsWith("D0Ev") ? text + QStringLiteral(" (deleting)") : text;
}

QString functionAt(const void *address)
{
    Dl_info info;
    const bool known = dladdr(address, &info) != 0 && info.dli_saddr == address && info.dli_sname;
    return known ? slotText(info.dli_sname) : QStringLiteral("(not exported)");
}

// Before the slots a table holds the offset to the whole object and the type.
void writeVirtualSlots(QTextStream &out, const Symbol &table, const void *const *entries)
{
    constexpr int HEAD_ENTRIES = 2;
    out << '[' << readable(table.name) << "]\n";
    for (int i = HEAD_ENTRIES; i < int(table.bytes / sizeof(void *)); ++i)
        out << "virtual " << i - HEAD_ENTRIES << ": " << functionAt(entries[i]) << '\n';
}

// Hosts hold these values themselves, so they know where each part lies.
void writeValueTypes(QTextStream &out)
{
    using namespace Korvo::Web;
    out << "[layout of value types]\n"
        << "size ProjectInfo = " << sizeof(ProjectInfo) << '\n'
        << "size SingleMediaFileLinkData = " << sizeof(SingleMediaFileLinkData) << '\n'
        << "field SingleMediaFileLinkData::url = " << offsetof(SingleMediaFileLinkData, url) << '\n'
        << "field SingleMediaFileLinkData::type = " << offsetof(SingleMediaFileLinkData, type) << '\n'
        << "field SingleMediaFileLinkData::name = " << offsetof(SingleMediaFileLinkData, name) << '\n'
        << "size UploadStatusInfo = " << sizeof(UploadStatusInfo) << '\n'
        << "field UploadStatusInfo::projectId = " << offsetof(UploadStatusInfo, projectId) << '\n'
        << "field UploadStatusInfo::status = " << offsetof(UploadStatusInfo, status) << '\n';
}

void writeSymbols(QTextStream &out, const QVector<Symbol> &symbols)
{
    QSet<QString> texts;
    for (const Symbol &symbol : symbols) {
        // Of Qt's inline code one build exports a piece and another none.
        const QString text = readable(symbol.name);
        if (text.contains(QLatin1String("Korvo::")))
            texts.insert(text);
    }
    QStringList sorted = texts.values();
    sorted.sort();
    out << "[exported symbols]\n";
    for (const QString &text : qAsConst(sorted))
        out << "symbol " << text << '\n';
}

} // namespace

std::optional<QString> binaryDescription(const QString &libraryFile)
{
    QLibrary library(QDir().absoluteFilePath(libraryFile));
    const QVector<Symbol> symbols = exportedSymbols(libraryFile);
    if (symbols.isEmpty() || !library.load())
        return std::nullopt;
    QString text;
    QTextStream out(&text);
    for (const Symbol &symbol : symbols) {
        if (symbol.name.startsWith("_ZTV"))
            writeVirtualSlots(out, symbol, reinterpret_cast<const void *const *>(library.resolve(symbol.name)));
    }
    writeValueTypes(out);
    writeSymbols(out, symbols);
    out.flush();
    return text;
}
