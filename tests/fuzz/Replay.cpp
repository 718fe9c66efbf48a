// Runs a fuzz target without libFuzzer: first its corpus as it is, then variations of it for a number of seconds. The
// seed decides about the variations; nothing here learns which of them reach new code.
#include "FuzzTarget.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
#include <QtCore/QEvent>
#include <QtCore/QFile>

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <random>
#include <unistd.h>

using Korvo::Web::Fuzz::runTarget;

namespace {

constexpr int MOST_INPUT_BYTES = 4096;
constexpr int MOST_CHANGES = 8;

QByteArray current; // the input that is running; whoever dies of it leaves it behind
QByteArray failurePath;

void keepInput(int signal)
{
    const int file = open(failurePath.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (file >= 0 && write(file, current.constData(), size_t(current.size())) >= 0)
        std::fprintf(stderr, "the input is kept in %s\n", failurePath.constData());
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

void run(const QByteArray &input)
{
    current = input;
    runTarget(input);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", qPrintable(path));
    return file.readAll();
}

QList<QByteArray> corpusIn(const QString &folder)
{
    QList<QByteArray> corpus;
    const QStringList names = QDir(folder).entryList(QDir::Files, QDir::Name);
    for (const QString &name : names)
        corpus.append(contentOf(QDir(folder).filePath(name)));
    if (corpus.isEmpty())
        qFatal("no corpus in %s", qPrintable(folder));
    return corpus;
}

// A dictionary as libFuzzer reads it: one quoted word a line, "\xNN" for odd bytes.
QList<QByteArray> wordsIn(const QString &dictionary)
{
    QList<QByteArray> words;
    const QList<QByteArray> lines = contentOf(dictionary).split('\n');
    for (const QByteArray &line : lines) {
        if (!line.startsWith('"'))
            continue;
        QByteArray word = line.mid(1, line.lastIndexOf('"') - 1);
        for (int escape = word.indexOf("\\x"); escape >= 0; escape = word.indexOf("\\x", escape + 1))
            word.replace(escape, 4, QByteArray::fromHex(word.mid(escape + 2, 2)));
        words.append(word.replace("\\\"", "\"").replace("\\\\", "\\"));
    }
    return words;
}

class Mutator
{
public:
    Mutator(quint64 seed, QList<QByteArray> newCorpus, QList<QByteArray> newWords)
        : random(seed)
        , corpus(std::move(newCorpus))
        , words(std::move(newWords))
    {
    }

    QByteArray next()
    {
        QByteArray input = corpus.at(below(corpus.size()));
        const int changes = 1 + below(MOST_CHANGES);
        for (int i = 0; i < changes; ++i)
            change(input);
        input.truncate(MOST_INPUT_BYTES);
        return input;
    }

private:
    int below(int limit) { return limit > 0 ? int(random() % quint64(limit)) : 0; }
    int place(const QByteArray &input) { return below(input.size() + 1); }
    int length() { return 1 + below(1 << below(8)); }
    QByteArray piece(const QByteArray &from) { return from.mid(place(from), length()); }

    void change(QByteArray &input)
    {
        switch (below(9)) {
        case 0:
            input.insert(place(input), char(below(256)));
            return;
        case 1:
            input.remove(place(input), length());
            return;
        case 2:
            input.replace(place(input), 1, QByteArray(1, char(below(256))));
            return;
        case 3:
            input.insert(place(input), piece(input));
            return;
        case 4:
            input.insert(place(input), piece(corpus.at(below(corpus.size()))));
            return;
        case 5:
            input.replace(place(input), length(), piece(corpus.at(below(corpus.size()))));
            return;
        case 6:
            swapLines(input);
            return;
        case 7:
            input.insert(place(input), QByteArray::number(qint64(random()) >> below(64)));
            return;
        default:
            input.insert(place(input), words.isEmpty() ? QByteArray("\n") : words.at(below(words.size())));
            return;
        }
    }

    void swapLines(QByteArray &input)
    {
        QList<QByteArray> lines = input.split('\n');
        lines.swapItemsAt(below(lines.size()), below(lines.size()));
        input = lines.join('\n');
    }

    std::mt19937_64 random;
    const QList<QByteArray> corpus;
    const QList<QByteArray> words;
};

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    const QCommandLineOption seconds(QStringLiteral("seconds"), QStringLiteral("how long to vary the inputs"),
                                     QStringLiteral("N"), QStringLiteral("0"));
    const QCommandLineOption seed(QStringLiteral("seed"), QStringLiteral("seed of the variations"), QStringLiteral("N"),
                                  QStringLiteral("1"));
    const QCommandLineOption dictionary(QStringLiteral("dictionary"), QStringLiteral("words to put in"),
                                        QStringLiteral("FILE"));
    parser.addOptions({seconds, seed, dictionary});
    parser.addPositionalArgument(QStringLiteral("corpus"), QStringLiteral("folder with inputs, or one input"));
    parser.process(application);
    const QString corpusPath = parser.positionalArguments().value(0);

    failurePath
        = QFile::encodeName(QDir::current().filePath(QCoreApplication::applicationName() + QStringLiteral("-failure")));
    std::signal(SIGABRT, keepInput);
    std::signal(SIGSEGV, keepInput);

    const QList<QByteArray> corpus
        = QFileInfo(corpusPath).isFile() ? QList<QByteArray>{contentOf(corpusPath)} : corpusIn(corpusPath);
    for (const QByteArray &input : corpus)
        run(input);

    Mutator mutator(parser.value(seed).toULongLong(), corpus,
                    parser.isSet(dictionary) ? wordsIn(parser.value(dictionary)) : QList<QByteArray>());
    const qint64 limit = parser.value(seconds).toLongLong() * 1000;
    QElapsedTimer clock;
    clock.start();
    qint64 runs = 0;
    for (; clock.elapsed() < limit; ++runs)
        run(mutator.next());
    std::printf("%d inputs of the corpus and %lld variations hold\n", int(corpus.size()), static_cast<long long>(runs));
    return 0;
}
