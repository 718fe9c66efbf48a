// Describes the library's public interface as text, and says what differs between two descriptions.
#include "InterfaceComparison.h"
#include "InterfaceDescription.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTextStream>

namespace {

constexpr int EXIT_DIFFERENT = 1;
constexpr int EXIT_USAGE = 2;
constexpr int EXIT_FAILED = 3;

const QString META_OBJECT_FILE = QStringLiteral("meta-object.txt");
const QString BINARY_FILE = QStringLiteral("binary.txt");

QTextStream &out()
{
    static QTextStream stream(stdout);
    return stream;
}

bool writeText(const QString &path, const QString &text)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(text.toUtf8()) >= 0 && file.flush();
}

std::optional<QString> textOf(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return QString::fromUtf8(file.readAll());
}

// An empty text is not written, and an older one does not stay.
bool keepText(const QString &path, const QString &text)
{
    return text.isEmpty() ? !QFile::exists(path) || QFile::remove(path) : writeText(path, text);
}

int describe(const QString &libraryFile, const QDir &folder)
{
    const std::optional<QString> binary = binaryDescription(libraryFile);
    if (!binary) {
        out() << "Virtual slots and exported symbols cannot be read from " << libraryFile << '\n';
        return EXIT_FAILED;
    }
    const bool written = folder.mkpath(QStringLiteral("."))
                         && keepText(folder.filePath(META_OBJECT_FILE), metaObjectDescription())
                         && keepText(folder.filePath(BINARY_FILE), *binary);
    return written ? 0 : EXIT_FAILED;
}

// A file that this platform could not write is not compared, and that is said.
int compareFile(const QString &name, const QDir &kept, const QDir &current)
{
    const std::optional<QString> before = textOf(kept.filePath(name));
    const std::optional<QString> after = textOf(current.filePath(name));
    if (!before) {
        out() << name << ": there is no kept description in " << kept.path() << '\n';
        return EXIT_FAILED;
    }
    if (!after) {
        out() << name << ": not described on this platform, so virtual slots and exported symbols are not compared\n";
        return name == BINARY_FILE ? 0 : EXIT_FAILED;
    }
    const QStringList differences = interfaceDifferences(*before, *after);
    for (const QString &difference : differences)
        out() << difference << '\n';
    return differences.isEmpty() ? 0 : EXIT_DIFFERENT;
}

int compare(const QDir &kept, const QDir &current)
{
    const int result = qMax(compareFile(META_OBJECT_FILE, kept, current), compareFile(BINARY_FILE, kept, current));
    if (result == EXIT_DIFFERENT)
        out() << "The public interface differs from the kept one. If that is meant: scripts/interface --accept\n";
    return result;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    const QString command = arguments.value(0);
    if (arguments.size() == 3 && command == QLatin1String("describe"))
        return describe(arguments.at(1), QDir(arguments.at(2)));
    if (arguments.size() == 3 && command == QLatin1String("compare"))
        return compare(QDir(arguments.at(1)), QDir(arguments.at(2)));
    QTextStream(stderr) << "usage: korvo-interface describe LIBRARY FOLDER\n"
                           "       korvo-interface compare KEPT-FOLDER CURRENT-FOLDER\n";
    return EXIT_USAGE;
}
