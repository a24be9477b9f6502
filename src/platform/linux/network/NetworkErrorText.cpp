#include "platform/linux/network/NetworkErrorText.h"

#include "platform/SystemLanguage.h"

namespace talvenor {

namespace {

struct Text
{
    QStringView english;
    QStringView german;
};

Text textFor(CURLcode code)
{
    switch (code) {
    case CURLE_COULDNT_RESOLVE_HOST:
        return {u"The server's name could not be found. Please check the internet connection.",
                u"Der Name des Servers wurde nicht gefunden. Bitte prüfe die Internetverbindung."};
    case CURLE_COULDNT_CONNECT:
        return {u"The server cannot be reached.", u"Der Server ist nicht erreichbar."};
    case CURLE_OPERATION_TIMEDOUT:
        return {u"The server took too long to answer.", u"Der Server hat nicht rechtzeitig geantwortet."};
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_INVALIDCERTSTATUS:
        return {u"The server could not prove its identity, so nothing was sent.",
                u"Der Server konnte sich nicht ausweisen, deshalb wurde nichts gesendet."};
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_ENGINE_NOTFOUND:
    case CURLE_SSL_ENGINE_SETFAILED:
    case CURLE_SSL_CERTPROBLEM:
        return {u"A secure connection to the server could not be made.",
                u"Es konnte keine sichere Verbindung zum Server aufgebaut werden."};
    case CURLE_GOT_NOTHING:
    case CURLE_PARTIAL_FILE:
    case CURLE_RECV_ERROR:
    case CURLE_SEND_ERROR:
        return {u"The connection to the server was lost.", u"Die Verbindung zum Server wurde unterbrochen."};
    case CURLE_FILESIZE_EXCEEDED:
        return {u"The server's answer is too large.", u"Die Antwort des Servers ist zu groß."};
    case CURLE_ABORTED_BY_CALLBACK:
        return {u"The request was cancelled.", u"Die Anfrage wurde abgebrochen."};
    case CURLE_BAD_FUNCTION_ARGUMENT:
    case CURLE_URL_MALFORMAT:
        return {u"The request cannot be sent in this form.",
                u"Die Anfrage lässt sich in dieser Form nicht senden."};
    case CURLE_OUT_OF_MEMORY:
        return {u"There is not enough memory for the request.",
                u"Für die Anfrage reicht der Speicher nicht aus."};
    default:
        return {u"The request to the server failed.", u"Die Anfrage an den Server ist fehlgeschlagen."};
    }
}

} // namespace

QString networkErrorText(CURLcode code)
{
    const Text text = textFor(code);
    return (systemSpeaksGerman() ? text.german : text.english).toString();
}

} // namespace talvenor
