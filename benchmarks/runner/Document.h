#pragma once

#include <QtCore/QString>

namespace Korvo::Bench {

/// A document with passages that are measured and passages that are written by hand. A measured one stands between the
/// lines "<!-- NAME -->" and "<!-- end of NAME -->".
class Document
{
public:
    /// An empty path: passages go to standard output.
    explicit Document(QString documentPath)
        : path(std::move(documentPath))
    {
    }

    /// Throws std::runtime_error when the document cannot be written or has no such passage.
    void replace(const QString &passage, const QString &text) const;

private:
    QString path;
};

} // namespace Korvo::Bench
