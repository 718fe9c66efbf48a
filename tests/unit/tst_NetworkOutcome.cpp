#include "handles/NetworkOutcome.h"

#include <QtCore/QMap>
#include <QtCore/QMetaEnum>
#include <QtTest/QTest>

using Korvo::Web::Error;
using Korvo::Web::errorFor;

class tst_NetworkOutcome : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyNetworkErrorHasItsCode_data();
    void everyNetworkErrorHasItsCode();
    void anUnknownNumberIsATransportFailure();
};

void tst_NetworkOutcome::everyNetworkErrorHasItsCode_data()
{
    QTest::addColumn<int>("networkError");
    QTest::addColumn<int>("code");
    // In numbers on both sides: hosts and Qt know them by their numbers.
    const QMap<int, int> named = {{0, 0}, {4, 1}, {99, 1}, {5, 4}, {204, 3}, {401, 2}};
    const auto errors = QMetaEnum::fromType<QNetworkReply::NetworkError>();
    for (int i = 0; i < errors.keyCount(); ++i) {
        QTest::newRow(errors.key(i)) << errors.value(i) << named.value(errors.value(i), 14);
    }
}

void tst_NetworkOutcome::everyNetworkErrorHasItsCode()
{
    QFETCH(int, networkError);
    QFETCH(int, code);
    QCOMPARE(static_cast<int>(errorFor(static_cast<QNetworkReply::NetworkError>(networkError))), code);
}

void tst_NetworkOutcome::anUnknownNumberIsATransportFailure()
{
    QCOMPARE(errorFor(static_cast<QNetworkReply::NetworkError>(777)), Error::Network);
}

QTEST_GUILESS_MAIN(tst_NetworkOutcome)

#include "tst_NetworkOutcome.moc"
