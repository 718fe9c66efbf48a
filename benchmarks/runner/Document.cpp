#include "runner/Document.h"

#include <QtCore/QFile>
#include <QtCore/QTextStream>

#include <stdexcept>

namespace Korvo::Bench {

void Document::replace(const QString &passage, const QString &text) const
{
    if (path.isEmpty()) {
        QTextStream(stdout) << passage << ":\n" << text << '\n';
        return;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite))
        throw std::runtime_error("cannot open " + path.toStdString());
    QString content = QString::fromUtf8(file.readAll());
    const QString head = QStringLiteral("<!-- %1 -->\n").arg(passage);
    const int start = content.indexOf(head) + head.size();
    const int end = content.indexOf(QStringLiteral("<!-- end of %1 -->").arg(passage));
    if (start < head.size() || end < start)
        throw std::runtime_error(path.toStdString() + " has no passage " + passage.toStdString());
    content.replace(start, end - start, text);
    file.resize(0);
    if (!file.seek(0) || file.write(content.toUtf8()) < 0)
        throw std::runtime_error("cannot write " + path.toStdString());
}

} // namespace Korvo::Bench
