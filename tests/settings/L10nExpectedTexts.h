#pragma once

#include "settings/L10n.h"

#include <array>

namespace talvenor::test {

/// One shared text as it must read.
struct ExpectedText
{
    const char *name;
    QString (*read)();
    const char *english;
    const char *german;
};

/// All shared texts, written down a second time and apart from the table that the program uses, so that a
/// slip there shows here.
// clang-format off
inline const std::array expectedTexts{
    ExpectedText{"appName", &L10n::appName,
     "Talvenor",
     "Talvenor"},
    ExpectedText{"readyToRecord", &L10n::readyToRecord,
     "Ready to Record",
     "Bereit zur Aufnahme"},
    ExpectedText{"recordingInProgress", &L10n::recordingInProgress,
     "Recording in Progress",
     "Aufnahme läuft"},
    ExpectedText{"clickToStart", &L10n::clickToStart,
     "Click to Start",
     "Klicke zum Starten"},
    ExpectedText{"newRecording", &L10n::newRecording,
     "New Recording",
     "Neue Aufnahme"},
    ExpectedText{"stopRecording", &L10n::stopRecording,
     "Stop Recording",
     "Aufnahme stoppen"},
    ExpectedText{"recordings", &L10n::recordings,
     "Recordings",
     "Aufnahmen"},
    ExpectedText{"noRecordingsYet", &L10n::noRecordingsYet,
     "No Recordings Yet",
     "Noch keine Aufnahmen"},
    ExpectedText{"noRecordingsSubtitle", &L10n::noRecordingsSubtitle,
     "Start your first recording",
     "Starte deine erste Aufnahme"},
    ExpectedText{"noResults", &L10n::noResults,
     "No Results",
     "Keine Ergebnisse"},
    ExpectedText{"searchRecordings", &L10n::searchRecordings,
     "Search recordings...",
     "Aufnahmen durchsuchen..."},
    ExpectedText{"transcript", &L10n::transcript,
     "Transcript",
     "Transkript"},
    ExpectedText{"summary", &L10n::summary,
     "Summary",
     "Zusammenfassung"},
    ExpectedText{"transcribe", &L10n::transcribe,
     "Transcribe",
     "Transkribieren"},
    ExpectedText{"summarize", &L10n::summarize,
     "Summarize",
     "Zusammenfassen"},
    ExpectedText{"export", &L10n::export_,
     "Export",
     "Exportieren"},
    ExpectedText{"delete", &L10n::delete_,
     "Delete",
     "Löschen"},
    ExpectedText{"participantsTab", &L10n::participantsTab,
     "Participants",
     "Teilnehmer"},
    ExpectedText{"noParticipantsYet", &L10n::noParticipantsYet,
     "No Participants",
     "Keine Teilnehmer"},
    ExpectedText{"noParticipantsHint", &L10n::noParticipantsHint,
     "Add participants manually or let AI detect them.",
     "Füge Teilnehmer manuell hinzu oder lasse sie von der KI erkennen."},
    ExpectedText{"addParticipantPlaceholder", &L10n::addParticipantPlaceholder,
     "Add participant...",
     "Teilnehmer hinzufügen..."},
    ExpectedText{"detectedByAI", &L10n::detectedByAI,
     "Detected by AI",
     "Von KI erkannt"},
    ExpectedText{"noTranscriptYet", &L10n::noTranscriptYet,
     "No Transcript Available",
     "Noch kein Transkript vorhanden"},
    ExpectedText{"noTranscriptHint", &L10n::noTranscriptHint,
     "Click \"Transcribe\" to transcribe the recording.",
     "Klicke auf \"Transkribieren\" um die Aufnahme zu transkribieren."},
    ExpectedText{"noSummaryYet", &L10n::noSummaryYet,
     "No Summary Available",
     "Noch keine Zusammenfassung"},
    ExpectedText{"noSummaryHint", &L10n::noSummaryHint,
     "Click \"Summarize\" to create an AI summary.",
     "Klicke auf \"Zusammenfassen\" um eine KI-Zusammenfassung zu erstellen."},
    ExpectedText{"statusRecording", &L10n::statusRecording,
     "Recording",
     "Aufnahme"},
    ExpectedText{"statusTranscribing", &L10n::statusTranscribing,
     "Transcribing...",
     "Transkribiert..."},
    ExpectedText{"statusSummarizing", &L10n::statusSummarizing,
     "Summarizing...",
     "Zusammenfassung..."},
    ExpectedText{"statusCompleted", &L10n::statusCompleted,
     "Completed",
     "Abgeschlossen"},
    ExpectedText{"statusFailed", &L10n::statusFailed,
     "Failed",
     "Fehlgeschlagen"},
    ExpectedText{"processingTranscription", &L10n::processingTranscription,
     "Transcribing...",
     "Transkribiere..."},
    ExpectedText{"processingSummary", &L10n::processingSummary,
     "Creating summary...",
     "Zusammenfassung wird erstellt..."},
    ExpectedText{"settings", &L10n::settings,
     "Settings",
     "Einstellungen"},
    ExpectedText{"storageLocation", &L10n::storageLocation,
     "Storage Location",
     "Speicherort"},
    ExpectedText{"change", &L10n::change,
     "Change...",
     "Ändern..."},
    ExpectedText{"storageUsage", &L10n::storageUsage,
     "Storage Usage:",
     "Speicherverbrauch:"},
    ExpectedText{"chooseStorageMessage", &L10n::chooseStorageMessage,
     "Choose storage location for recordings",
     "Wähle den Speicherort für Aufnahmen"},
    ExpectedText{"apiKeyPlaceholder", &L10n::apiKeyPlaceholder,
     "Enter API key...",
     "API-Key eingeben..."},
    ExpectedText{"apiKeyDescription", &L10n::apiKeyDescription,
     "Required for AI summaries. Available at platform.openai.com",
     "Wird für die KI-Zusammenfassung benötigt. Erhältlich auf platform.openai.com"},
    ExpectedText{"apiKeyRequired", &L10n::apiKeyRequired,
     "API key required",
     "API-Key erforderlich"},
    ExpectedText{"audio", &L10n::audio,
     "Audio",
     "Audio"},
    ExpectedText{"audioSource", &L10n::audioSource,
     "Audio Source",
     "Audio-Quelle"},
    ExpectedText{"systemAudio", &L10n::systemAudio,
     "System Audio",
     "System-Audio"},
    ExpectedText{"microphone", &L10n::microphone,
     "Microphone",
     "Mikrofon"},
    ExpectedText{"bothAudio", &L10n::bothAudio,
     "Both",
     "Beides"},
    ExpectedText{"transcription", &L10n::transcription,
     "Transcription",
     "Transkription"},
    ExpectedText{"language", &L10n::language,
     "Language",
     "Sprache"},
    ExpectedText{"appLanguageLabel", &L10n::appLanguageLabel,
     "App Language",
     "App-Sprache"},
    ExpectedText{"autoTranscribeLabel", &L10n::autoTranscribeLabel,
     "Auto-transcribe after recording",
     "Automatisch transkribieren nach Aufnahme"},
    ExpectedText{"summarySection", &L10n::summarySection,
     "Summary",
     "Zusammenfassung"},
    ExpectedText{"autoSummarizeLabel", &L10n::autoSummarizeLabel,
     "Auto-summarize after transcription",
     "Automatisch zusammenfassen nach Transkription"},
    ExpectedText{"appearance", &L10n::appearance,
     "Appearance",
     "Erscheinungsbild"},
    ExpectedText{"welcomeTitle", &L10n::welcomeTitle,
     "Welcome to Talvenor",
     "Willkommen bei Talvenor"},
    ExpectedText{"welcomeSubtitle", &L10n::welcomeSubtitle,
     "Record meetings, transcribe\nand summarize them – with one click.",
     "Zeichne Meetings auf, transkribiere\nund fasse sie zusammen – mit einem Klick."},
    ExpectedText{"storageStepTitle", &L10n::storageStepTitle,
     "Storage Location",
     "Speicherort"},
    ExpectedText{"storageStepSubtitle", &L10n::storageStepSubtitle,
     "Choose where your recordings should be stored.",
     "Wähle, wo deine Aufnahmen gespeichert werden sollen."},
    ExpectedText{"apiKeyStepTitle", &L10n::apiKeyStepTitle,
     "OpenAI API-Key",
     "OpenAI API-Key"},
    ExpectedText{"apiKeyStepSubtitle", &L10n::apiKeyStepSubtitle,
     "Optional: An OpenAI API key is required\nfor AI-powered summaries.",
     "Optional: Für die KI-Zusammenfassung wird ein\nOpenAI API-Key benötigt."},
    ExpectedText{"apiKeyLaterNote", &L10n::apiKeyLaterNote,
     "You can also enter the key later in Settings.",
     "Du kannst den Key auch später in den Einstellungen eingeben."},
    ExpectedText{"next", &L10n::next,
     "Next",
     "Weiter"},
    ExpectedText{"back", &L10n::back,
     "Back",
     "Zurück"},
    ExpectedText{"done", &L10n::done,
     "Done",
     "Fertig"},
    ExpectedText{"letsGo", &L10n::letsGo,
     "Let's Go",
     "Los geht's"},
    ExpectedText{"error", &L10n::error,
     "Error",
     "Fehler"},
    ExpectedText{"unknownError", &L10n::unknownError,
     "Unknown error",
     "Unbekannter Fehler"},
    ExpectedText{"summarizationUserPrompt", &L10n::summarizationUserPrompt,
     "Please summarize the following meeting transcript:\n\n",
     "Bitte fasse folgendes Meeting-Transkript zusammen:\n\n"},
    ExpectedText{"summarizationSystemPrompt", &L10n::summarizationSystemPrompt,
     "You are an assistant that summarizes meeting transcripts. Create a structured summary in English with the following sections:\n"
     "\n"
     "## Participants\n"
     "- List all people recognizable as speakers in the transcript (by name, address, or distinguishable voices). If no names are identifiable, use \"Speaker 1\", \"Speaker 2\", etc.\n"
     "\n"
     "## Summary\n"
     "A brief summary of the meeting in 2-3 sentences.\n"
     "\n"
     "## Key Points\n"
     "- The most important topics discussed as bullet points\n"
     "\n"
     "## Decisions\n"
     "- Decisions that were made\n"
     "\n"
     "## Next Steps / Action Items\n"
     "- Specific tasks with responsible persons (if identifiable)\n"
     "\n"
     "Keep the summary concise and professional.\n"
     "\n"
     "IMPORTANT: At the very end of your response, output a separate line in this format:\n"
     "PARTICIPANTS: Name1, Name2, Name3\n"
     "This must be the last line.",
     "Du bist ein Assistent, der Meeting-Transkripte zusammenfasst. Erstelle eine strukturierte Zusammenfassung auf Deutsch mit folgenden Abschnitten:\n"
     "\n"
     "## Teilnehmer\n"
     "- Liste alle Personen auf, die im Transkript als Sprecher erkennbar sind (z.B. durch Namen, Anreden oder unterscheidbare Stimmen). Wenn keine Namen erkennbar sind, verwende \"Sprecher 1\", \"Sprecher 2\" etc.\n"
     "\n"
     "## Zusammenfassung\n"
     "Eine kurze Zusammenfassung des Meetings in 2-3 Sätzen.\n"
     "\n"
     "## Wichtige Punkte\n"
     "- Die wichtigsten besprochenen Themen als Aufzählung\n"
     "\n"
     "## Entscheidungen\n"
     "- Getroffene Entscheidungen\n"
     "\n"
     "## Nächste Schritte / Action Items\n"
     "- Konkrete Aufgaben mit Verantwortlichen (falls erkennbar)\n"
     "\n"
     "Halte die Zusammenfassung prägnant und professionell.\n"
     "\n"
     "WICHTIG: Gib am Ende der Antwort eine separate Zeile im Format aus:\n"
     "PARTICIPANTS: Name1, Name2, Name3\n"
     "Dies muss die letzte Zeile sein."},
};
// clang-format on

} // namespace talvenor::test
