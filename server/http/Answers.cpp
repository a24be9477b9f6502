#include "server/http/Answers.h"

#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>

#include <algorithm>
#include <array>

namespace talvenor::server {

namespace {

struct Answer
{
    Reason reason;
    int status;
    const char *english;
    const char *german;
};

/// 401 makes a client forget its token, so it stands only for a session that does not exist and for a login
/// that fails.
constexpr std::array answers = {
    Answer{Reason::malformedRequest, 400, "The request is not valid HTTP.",
           "Die Anfrage ist kein gültiges HTTP."},
    Answer{Reason::malformedJson, 400, "The request is not valid JSON.",
           "Die Anfrage ist kein gültiges JSON."},
    Answer{Reason::notAnObject, 400, "The request must be a JSON object.",
           "Die Anfrage muss ein JSON-Objekt sein."},
    Answer{Reason::invalidField, 400,
           "This field is missing or not valid: ", "Dieses Feld fehlt oder ist ungültig: "},
    Answer{Reason::invalidAddress, 400, "Please enter a valid e-mail address.",
           "Bitte gib eine gültige E-Mail-Adresse ein."},
    Answer{Reason::passwordTooShort, 400, "The password must have at least 6 characters.",
           "Das Passwort muss mindestens 6 Zeichen haben."},
    Answer{Reason::passwordTooLong, 400, "The password is too long.", "Das Passwort ist zu lang."},
    Answer{Reason::nameInvalid, 400, "Please enter a valid name.", "Bitte gib einen gültigen Namen ein."},
    Answer{Reason::currentPasswordWrong, 400, "The current password is wrong.",
           "Das aktuelle Passwort ist falsch."},
    Answer{Reason::wrongCredentials, 401, "The e-mail address or the password is wrong.",
           "Die E-Mail-Adresse oder das Passwort ist falsch."},
    Answer{Reason::notSignedIn, 401, "Please sign in.", "Bitte melde dich an."},
    Answer{Reason::recordingLimitReached, 403, "The monthly limit of recordings is reached.",
           "Das monatliche Aufnahme-Limit ist erreicht."},
    Answer{Reason::summaryNotInPlan, 403, "Summaries are not part of this plan.",
           "Zusammenfassungen sind in diesem Abo nicht enthalten."},
    Answer{Reason::notFound, 404, "There is nothing here.", "Hier gibt es nichts."},
    Answer{Reason::methodNotAllowed, 405, "This method is not allowed here.",
           "Diese Methode ist hier nicht erlaubt."},
    Answer{Reason::addressTaken, 409, "An account with this e-mail address exists already.",
           "Es gibt bereits ein Konto mit dieser E-Mail-Adresse."},
    Answer{Reason::bodyTooLarge, 413, "The request is too large.", "Die Anfrage ist zu groß."},
    Answer{Reason::tooManyAttempts, 429, "Too many attempts. Please try again later.",
           "Zu viele Versuche. Bitte versuche es später erneut."},
    Answer{Reason::headerTooLarge, 431, "The header of the request is too large.",
           "Der Kopf der Anfrage ist zu groß."},
    Answer{Reason::internalError, 500, "The service has run into an error.",
           "Im Dienst ist ein Fehler aufgetreten."},
    Answer{Reason::busy, 503, "The service is busy. Please try again.",
           "Der Dienst ist ausgelastet. Bitte versuche es erneut."},
};

const Answer &answerFor(Reason reason)
{
    return *std::find_if(answers.begin(), answers.end(),
                         [reason](const Answer &answer) { return answer.reason == reason; });
}

} // namespace

int statusOf(Reason reason)
{
    return answerFor(reason).status;
}

std::string textOf(const Refusal &refusal, Language language)
{
    const Answer &answer = answerFor(refusal.reason());
    std::string text = language == Language::german ? answer.german : answer.english;
    if (!refusal.field().empty())
        text += refusal.field() + ".";
    return text;
}

HttpResponse answerTo(const Refusal &refusal, Language language)
{
    HttpResponse response;
    response.status = statusOf(refusal.reason());
    boost::json::object body;
    body["error"] = textOf(refusal, language);
    response.body = boost::json::serialize(body);
    return response;
}

} // namespace talvenor::server
