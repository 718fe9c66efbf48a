#include "ErrorText.h"

#include <QtCore/QCoreApplication>

namespace Korvo::Desktop {

using Web::Error;
using Web::KorvoWebApi;

namespace {

struct ErrorText
{
    Q_DECLARE_TR_FUNCTIONS(ErrorText)
};

Explanation networkFailure()
{
    return {
        ErrorText::tr("The platform could not be reached"),
        ErrorText::tr("The connection failed, or the server refused the request."),
        ErrorText::tr("Check the network connection, and proxy and authority file in the network settings. The log has "
                      "the details.")};
}

Explanation wrongCredentials()
{
    return {ErrorText::tr("The login was refused"), ErrorText::tr("User name, password or code is wrong."),
            ErrorText::tr("Type them again. \"Forgotten password\" sends you a new password.")};
}

} // namespace

Explanation explain(Error error)
{
    switch (error) {
    case Error::None:
        return {ErrorText::tr("The platform does not know this file"),
                ErrorText::tr("The server answered, but it has no link for the file."),
                ErrorText::tr("Ask for the list again; the file may have been removed.")};
    case Error::TimeOut:
        return {ErrorText::tr("The platform did not answer in time"),
                ErrorText::tr("The server is busy, or the connection has broken down."),
                ErrorText::tr("Check the network connection and try again later.")};
    case Error::Server:
        return {ErrorText::tr("The platform reports a failure of its own"),
                ErrorText::tr("The server could not carry out the request (HTTP status 500)."),
                ErrorText::tr("Try again later. If it stays, tell the operator of the platform.")};
    case Error::AuthenticationRequired:
        return {ErrorText::tr("The login is no longer valid"), ErrorText::tr("The server asks for a new login."),
                ErrorText::tr("Log in again, then repeat what you were doing.")};
    case Error::Cancelled:
        return {ErrorText::tr("A file was cut off"), ErrorText::tr("It was on its way when the transfer was aborted."),
                ErrorText::tr("Nothing needs to be done.")};
    case Error::UnreadableLogin:
        return {
            ErrorText::tr("The answer to the login cannot be read"),
            ErrorText::tr(
                "Something between this computer and the platform answered instead, a proxy perhaps, or nothing did."),
            ErrorText::tr("Check proxy and authority file in the network settings, then log in again.")};
    case Error::FileOpen:
        return {ErrorText::tr("A local file cannot be read"),
                ErrorText::tr("It is missing, locked by another program, changed while it was sent, or you lack the "
                              "right to read it."),
                ErrorText::tr("Close other programs that use the project, check the file's rights, then try again.")};
    case Error::CreationDate:
        return {ErrorText::tr("The creation date is missing"), ErrorText::tr("The project has no valid creation date."),
                ErrorText::tr("Upload the project again and give a date.")};
    case Error::DownloadFolder:
        return {
            ErrorText::tr("A download folder cannot be made"),
            ErrorText::tr("The folder cannot be created here, or the name of a file would lead out of it."),
            ErrorText::tr("Choose another folder. If it stays, the project on the platform has a damaged file name.")};
    case Error::FileWrite:
        return {ErrorText::tr("A downloaded file cannot be written"),
                ErrorText::tr("The disk is full, or the folder is write-protected."),
                ErrorText::tr("Make room on the disk, then try again: files that have arrived are kept.")};
    case Error::InvalidParameter:
        return {ErrorText::tr("The request was incomplete"), ErrorText::tr("A name, an id or a folder is empty."),
                ErrorText::tr("Fill in every field, then try again. The log lists the values.")};
    case Error::Network:
        return networkFailure();
    }
    // A number that a newer library knows.
    return {ErrorText::tr("Something failed (code %1)").arg(static_cast<int>(error)),
            ErrorText::tr("This program does not know the code."), ErrorText::tr("The log has the details.")};
}

Explanation explain(KorvoWebApi::LoginResult result, Error error)
{
    switch (result) {
    case KorvoWebApi::LoginResult::LoginResultSuccess:
        return {};
    case KorvoWebApi::LoginResult::LoginResultFalseCredentials:
        return wrongCredentials();
    case KorvoWebApi::LoginResult::LoginResultCancelled:
        return {ErrorText::tr("The login was cancelled"), {}, {}};
    case KorvoWebApi::LoginResult::LoginResultTimeOut:
        break;
    }
    return explain(error == Error::None ? Error::TimeOut : error);
}

} // namespace Korvo::Desktop
