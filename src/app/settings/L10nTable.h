#pragma once

/// Every shared text as X(name, English, German), in the order in which the properties are declared. Two
/// names bear an underscore because the plain word belongs to C++. Some texts have no reader at present and
/// belong to the table all the same.
// clang-format off
#define TALVENOR_L10N_TABLE(X) \
    X(appName, u"Talvenor", u"Talvenor") \
    X(readyToRecord, u"Ready to Record", u"Bereit zur Aufnahme") \
    X(recordingInProgress, u"Recording in Progress", u"Aufnahme läuft") \
    X(clickToStart, u"Click to Start", u"Klicke zum Starten") \
    X(newRecording, u"New Recording", u"Neue Aufnahme") \
    X(stopRecording, u"Stop Recording", u"Aufnahme stoppen") \
    X(recordings, u"Recordings", u"Aufnahmen") \
    X(noRecordingsYet, u"No Recordings Yet", u"Noch keine Aufnahmen") \
    X(noRecordingsSubtitle, u"Start your first recording", u"Starte deine erste Aufnahme") \
    X(noResults, u"No Results", u"Keine Ergebnisse") \
    X(searchRecordings, u"Search recordings...", u"Aufnahmen durchsuchen...") \
    X(transcript, u"Transcript", u"Transkript") \
    X(summary, u"Summary", u"Zusammenfassung") \
    X(transcribe, u"Transcribe", u"Transkribieren") \
    X(summarize, u"Summarize", u"Zusammenfassen") \
    X(export_, u"Export", u"Exportieren") \
    X(delete_, u"Delete", u"Löschen") \
    X(participantsTab, u"Participants", u"Teilnehmer") \
    X(noParticipantsYet, u"No Participants", u"Keine Teilnehmer") \
    X(noParticipantsHint, u"Add participants manually or let AI detect them.", \
      u"Füge Teilnehmer manuell hinzu oder lasse sie von der KI erkennen.") \
    X(addParticipantPlaceholder, u"Add participant...", u"Teilnehmer hinzufügen...") \
    X(detectedByAI, u"Detected by AI", u"Von KI erkannt") \
    X(noTranscriptYet, u"No Transcript Available", u"Noch kein Transkript vorhanden") \
    X(noSummaryYet, u"No Summary Available", u"Noch keine Zusammenfassung") \
    X(statusRecording, u"Recording", u"Aufnahme") \
    X(statusTranscribing, u"Transcribing...", u"Transkribiert...") \
    X(statusSummarizing, u"Summarizing...", u"Zusammenfassung...") \
    X(statusCompleted, u"Completed", u"Abgeschlossen") \
    X(statusFailed, u"Failed", u"Fehlgeschlagen") \
    X(processingTranscription, u"Transcribing...", u"Transkribiere...") \
    X(processingSummary, u"Creating summary...", u"Zusammenfassung wird erstellt...") \
    X(settings, u"Settings", u"Einstellungen") \
    X(storageLocation, u"Storage Location", u"Speicherort") \
    X(change, u"Change...", u"Ändern...") \
    X(storageUsage, u"Storage Usage:", u"Speicherverbrauch:") \
    X(chooseStorageMessage, u"Choose storage location for recordings", \
      u"Wähle den Speicherort für Aufnahmen") \
    X(apiKeyPlaceholder, u"Enter API key...", u"API-Key eingeben...") \
    X(apiKeyDescription, u"Required for AI summaries. Available at platform.openai.com", \
      u"Wird für die KI-Zusammenfassung benötigt. Erhältlich auf platform.openai.com") \
    X(apiKeyRequired, u"API key required", u"API-Key erforderlich") \
    X(audio, u"Audio", u"Audio") \
    X(audioSource, u"Audio Source", u"Audio-Quelle") \
    X(systemAudio, u"System Audio", u"System-Audio") \
    X(microphone, u"Microphone", u"Mikrofon") \
    X(bothAudio, u"Both", u"Beides") \
    X(transcription, u"Transcription", u"Transkription") \
    X(language, u"Language", u"Sprache") \
    X(appLanguageLabel, u"App Language", u"App-Sprache") \
    X(autoTranscribeLabel, u"Auto-transcribe after recording", \
      u"Automatisch transkribieren nach Aufnahme") \
    X(summarySection, u"Summary", u"Zusammenfassung") \
    X(autoSummarizeLabel, u"Auto-summarize after transcription", \
      u"Automatisch zusammenfassen nach Transkription") \
    X(appearance, u"Appearance", u"Erscheinungsbild") \
    X(welcomeTitle, u"Welcome to Talvenor", u"Willkommen bei Talvenor") \
    X(welcomeSubtitle, u"Record meetings, transcribe\nand summarize them – with one click.", \
      u"Zeichne Meetings auf, transkribiere\nund fasse sie zusammen – mit einem Klick.") \
    X(storageStepTitle, u"Storage Location", u"Speicherort") \
    X(storageStepSubtitle, u"Choose where your recordings should be stored.", \
      u"Wähle, wo deine Aufnahmen gespeichert werden sollen.") \
    X(apiKeyStepTitle, u"OpenAI API-Key", u"OpenAI API-Key") \
    X(apiKeyStepSubtitle, u"Optional: An OpenAI API key is required\nfor AI-powered summaries.", \
      u"Optional: Für die KI-Zusammenfassung wird ein\nOpenAI API-Key benötigt.") \
    X(apiKeyLaterNote, u"You can also enter the key later in Settings.", \
      u"Du kannst den Key auch später in den Einstellungen eingeben.") \
    X(next, u"Next", u"Weiter") \
    X(back, u"Back", u"Zurück") \
    X(done, u"Done", u"Fertig") \
    X(letsGo, u"Let's Go", u"Los geht's") \
    X(error, u"Error", u"Fehler") \
    X(unknownError, u"Unknown error", u"Unbekannter Fehler") \
    X(summarizationUserPrompt, u"Please summarize the following meeting transcript:\n\n", \
      u"Bitte fasse folgendes Meeting-Transkript zusammen:\n\n") \
    X(summarizationSystemPrompt, \
      u"You are an assistant that summarizes meeting transcripts. Create a structured summary in English with the following sections:\n" \
      u"\n" \
      u"## Participants\n" \
      u"- List all people recognizable as speakers in the transcript (by name, address, or distinguishable voices). If no names are identifiable, use \"Speaker 1\", \"Speaker 2\", etc.\n" \
      u"\n" \
      u"## Summary\n" \
      u"A brief summary of the meeting in 2-3 sentences.\n" \
      u"\n" \
      u"## Key Points\n" \
      u"- The most important topics discussed as bullet points\n" \
      u"\n" \
      u"## Decisions\n" \
      u"- Decisions that were made\n" \
      u"\n" \
      u"## Next Steps / Action Items\n" \
      u"- Specific tasks with responsible persons (if identifiable)\n" \
      u"\n" \
      u"Keep the summary concise and professional.\n" \
      u"\n" \
      u"IMPORTANT: At the very end of your response, output a separate line in this format:\n" \
      u"PARTICIPANTS: Name1, Name2, Name3\n" \
      u"This must be the last line.", \
      u"Du bist ein Assistent, der Meeting-Transkripte zusammenfasst. Erstelle eine strukturierte Zusammenfassung auf Deutsch mit folgenden Abschnitten:\n" \
      u"\n" \
      u"## Teilnehmer\n" \
      u"- Liste alle Personen auf, die im Transkript als Sprecher erkennbar sind (z.B. durch Namen, Anreden oder unterscheidbare Stimmen). Wenn keine Namen erkennbar sind, verwende \"Sprecher 1\", \"Sprecher 2\" etc.\n" \
      u"\n" \
      u"## Zusammenfassung\n" \
      u"Eine kurze Zusammenfassung des Meetings in 2-3 Sätzen.\n" \
      u"\n" \
      u"## Wichtige Punkte\n" \
      u"- Die wichtigsten besprochenen Themen als Aufzählung\n" \
      u"\n" \
      u"## Entscheidungen\n" \
      u"- Getroffene Entscheidungen\n" \
      u"\n" \
      u"## Nächste Schritte / Action Items\n" \
      u"- Konkrete Aufgaben mit Verantwortlichen (falls erkennbar)\n" \
      u"\n" \
      u"Halte die Zusammenfassung prägnant und professionell.\n" \
      u"\n" \
      u"WICHTIG: Gib am Ende der Antwort eine separate Zeile im Format aus:\n" \
      u"PARTICIPANTS: Name1, Name2, Name3\n" \
      u"Dies muss die letzte Zeile sein.")
// clang-format on
