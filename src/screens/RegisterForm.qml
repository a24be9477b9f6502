import QtQuick
import QtQuick.Layouts
import Talvenor

/// What the registration sheet holds. It scrolls where it is higher than its room, and then shows what has gone wrong.
ScrollArea {
    id: area
    objectName: "registerForm"

    required property string title

    signal closeRequested

    function showError(): void {
        const end = error.mapToItem(contentItem, 0, error.height).y;
        if (end > contentY + height)
            scrollTo(end + 12 - height);
    }

    padding: 24
    spacing: 24
    onContentHeightChanged: if (error.visible)
        showError()

    RegisterState {
        id: form
        onDismiss: area.closeRequested()
    }

    RowLayout {
        objectName: "header"
        Layout.fillWidth: true
        spacing: 12

        ColumnLayout {
            Layout.fillWidth: true
            spacing: 4

            StaticText {
                objectName: "title"
                Layout.fillWidth: true
                text: area.title
                font.pixelSize: Theme.title2
                font.weight: Font.Bold
                elide: Text.ElideRight
            }
            StaticText {
                Layout.fillWidth: true
                text: L10n.isGerman ? "Erstelle ein kostenloses Talvenor-Konto" : "Create a free Talvenor account"
                color: Theme.secondary
                font.pixelSize: Theme.caption
                wrapMode: Text.Wrap
            }
        }
        CloseButton {
            onClicked: area.closeRequested()
        }
    }

    ColumnLayout {
        objectName: "form"
        Layout.fillWidth: true
        spacing: 12

        FormField {
            objectName: "name"
            Layout.fillWidth: true
            label: "Name"
            placeholder: "Max Mustermann"
            hasInitialFocus: true
            onTextChanged: form.name = text
        }
        FormField {
            objectName: "email"
            Layout.fillWidth: true
            label: "E-Mail"
            placeholder: "name@example.com"
            inputMethodHints: Qt.ImhEmailCharactersOnly
            onTextChanged: form.email = text
        }
        FormField {
            objectName: "password"
            Layout.fillWidth: true
            label: L10n.isGerman ? "Passwort" : "Password"
            placeholder: "••••••••"
            isSecure: true
            onTextChanged: form.password = text
        }
        FormField {
            objectName: "confirmPassword"
            Layout.fillWidth: true
            label: L10n.isGerman ? "Passwort bestätigen" : "Confirm Password"
            placeholder: "••••••••"
            isSecure: true
            onTextChanged: form.confirmPassword = text
        }
        StaticText {
            id: error
            objectName: "error"
            Layout.fillWidth: true
            visible: text.length > 0
            text: Theme.bounded(form.errorMessage)
            color: Theme.redText
            font.pixelSize: Theme.caption
            wrapMode: Text.Wrap
        }
    }

    ColumnLayout {
        objectName: "footer"
        Layout.fillWidth: true
        spacing: 6

        SubmitButton {
            objectName: "submit"
            Layout.fillWidth: true
            text: L10n.isGerman ? "Registrieren" : "Sign Up"
            isBusy: form.isLoading
            isReady: form.isFormValid
            onClicked: form.signUp()
        }
        Row {
            objectName: "gift"
            Layout.alignment: Qt.AlignHCenter
            spacing: 6

            Symbol {
                anchors.verticalCenter: parent.verticalCenter
                name: "gift"
                size: Theme.caption2
                color: Theme.secondary
            }
            StaticText {
                anchors.verticalCenter: parent.verticalCenter
                text: L10n.isGerman ? "Kostenlos: 3 Aufnahmen pro Monat" : "Free: 3 recordings per month"
                color: Theme.secondary
                font.pixelSize: Theme.caption
            }
        }
        StaticText {
            Layout.alignment: Qt.AlignHCenter
            text: L10n.isGerman ? "Jederzeit auf Premium upgraden" : "Upgrade to Premium anytime"
            color: Theme.tertiary
            font.pixelSize: Theme.caption2
        }
    }
}
