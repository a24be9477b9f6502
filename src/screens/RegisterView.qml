import QtQuick
import QtQuick.Layouts
import Talvenor

/// The registration form, a sheet over the sign-in screen.
Sheet {
    id: sheet

    title: L10n.isGerman ? "Konto erstellen" : "Create Account"
    width: 420
    height: 520
    visible: true

    RegisterState {
        id: form
        onDismiss: sheet.close()
    }

    contentItem: ColumnLayout {
        spacing: 24

        RowLayout {
            Layout.fillWidth: true

            ColumnLayout {
                Layout.fillWidth: true
                spacing: 4

                StaticText {
                    text: sheet.title
                    font.pixelSize: Theme.title2
                    font.weight: Font.Bold
                }
                StaticText {
                    text: L10n.isGerman ? "Erstelle ein kostenloses Talvenor-Konto" : "Create a free Talvenor account"
                    color: Theme.secondary
                    font.pixelSize: Theme.caption
                }
            }
            PushButton {
                Layout.alignment: Qt.AlignTop
                look: PushButton.Glyph
                text: "✕"
                spokenName: L10n.isGerman ? "Schließen" : "Close"
                onClicked: sheet.close()
            }
        }

        Column {
            Layout.fillWidth: true
            spacing: 12

            LabelledField {
                width: parent.width
                label: "Name"
                placeholder: "Max Mustermann"
                hasInitialFocus: true
                onTextChanged: form.name = text
            }
            LabelledField {
                width: parent.width
                label: "E-Mail"
                placeholder: "name@example.com"
                inputMethodHints: Qt.ImhEmailCharactersOnly
                onTextChanged: form.email = text
            }
            LabelledField {
                width: parent.width
                label: L10n.isGerman ? "Passwort" : "Password"
                placeholder: "••••••••"
                isSecure: true
                onTextChanged: form.password = text
            }
            LabelledField {
                width: parent.width
                label: L10n.isGerman ? "Passwort bestätigen" : "Confirm Password"
                placeholder: "••••••••"
                isSecure: true
                onTextChanged: form.confirmPassword = text
            }
            StaticText {
                width: parent.width
                visible: text.length > 0
                text: form.errorMessage
                color: Theme.red
                font.pixelSize: Theme.caption
                wrapMode: Text.Wrap
            }
        }

        ColumnLayout {
            Layout.fillWidth: true
            Layout.alignment: Qt.AlignBottom
            spacing: 6

            PushButton {
                Layout.fillWidth: true
                look: PushButton.Accent
                verticalPadding: 12
                cornerRadius: 10
                text: L10n.isGerman ? "Registrieren" : "Sign Up"
                isBusy: form.isLoading
                enabled: !form.isLoading && form.isFormValid
                opacity: form.isFormValid ? 1 : 0.6
                onClicked: form.signUp()
            }
            StaticText {
                Layout.alignment: Qt.AlignHCenter
                text: L10n.isGerman ? "Kostenlos: 3 Aufnahmen pro Monat" : "Free: 3 recordings per month"
                color: Theme.secondary
                font.pixelSize: Theme.caption
            }
            StaticText {
                Layout.alignment: Qt.AlignHCenter
                text: L10n.isGerman ? "Jederzeit auf Premium upgraden" : "Upgrade to Premium anytime"
                color: Theme.tertiary
                font.pixelSize: Theme.caption2
            }
        }
    }
}
