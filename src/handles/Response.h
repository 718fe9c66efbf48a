#pragma once

#include <NQKorvoWeb/Error.h>

#include <QtCore/QMetaType>
#include <QtCore/QSharedData>
#include <QtCore/QSharedDataPointer>
#include <QtNetwork/QNetworkReply>

#include <utility>

namespace Korvo::Web {

/// What the copies of one response share. Derived blocks add the values that the reply carried.
class ResponseData : public QSharedData
{
public:
    ResponseData() = default;
    virtual ~ResponseData();
    ResponseData &operator=(const ResponseData &) = delete;

    /// A block of its own with the same content, of the same derived class.
    virtual ResponseData *clone() const;

    Error error = Error::None;
    bool success = true;
    bool cancelled = false;
    bool authenticationRequired = false;

protected:
    ResponseData(const ResponseData &) = default;
};

} // namespace Korvo::Web

// Stands before the first use of the pointer: detaching has to copy the derived block.
template <>
Korvo::Web::ResponseData *QSharedDataPointer<Korvo::Web::ResponseData>::clone();

namespace Korvo::Web {

/// The parsed answer to one request: how the exchange ended, and in derived classes what it brought.
///
/// A value class: copies share their content until one of them is changed. A fresh response is a success.
class Response
{
public:
    Response();
    Response(const Response &) = default;
    virtual ~Response();

    bool isSuccess() const;
    bool isCancelled() const;
    bool isAuthenticationRequired() const;
    Error error() const;

    /// Takes over how the network ended the reply. The two markers are only ever set, never cleared.
    void setOutcome(QNetworkReply::NetworkError networkError);

    /// The same, and returns the code that came of it.
    Error applyOutcome(QNetworkReply::NetworkError networkError);

protected:
    explicit Response(ResponseData *newData);

    // Out of reach from outside: through a reference to the base it would exchange the values for those of another class.
    Response &operator=(const Response &) = default;

    const ResponseData &data() const;
    /// Detaches from the other copies first.
    ResponseData &changeableData();

private:
    QSharedDataPointer<ResponseData> d;
};

/// A response that carries @p Values besides its outcome. Values are a struct whose members all have a default.
template <typename Values>
class ResponseOf : public Response
{
protected:
    ResponseOf()
        : Response(new Data)
    {
    }

    const Values &values() const { return static_cast<const Data &>(data()).values; }
    /// The other copies keep theirs.
    void setValues(Values newValues) { static_cast<Data &>(changeableData()).values = std::move(newValues); }

private:
    struct Data : ResponseData
    {
        ResponseData *clone() const override { return new Data(*this); }

        Values values;
    };
};

/// Makes every response class known to queued connections, with and without its namespace. Harmless when repeated.
void registerResponseMetaTypes();

} // namespace Korvo::Web
