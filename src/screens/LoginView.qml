import QtQuick
import Talvenor

/// What the window shows while nobody is signed in.
FocusScope {
    id: view

    focus: true

    LoginState {
        id: login
    }

    Column {
        anchors.centerIn: parent
        width: 340
        spacing: 32

        Column {
            width: parent.width
            spacing: 8

            Image {
                anchors.horizontalCenter: parent.horizontalCenter
                width: 80
                height: 80
                source: "qrc:/talvenor/AppIcon.png"
                sourceSize.width: 160
                sourceSize.height: 160
                fillMode: Image.PreserveAspectFit
            }
            StaticText {
                width: parent.width
                text: L10n.appName
                font.pixelSize: Theme.title
                font.weight: Font.Bold
                horizontalAlignment: Text.AlignHCenter
            }
            StaticText {
                width: parent.width
                text: L10n.isGerman ? "Melde dich an, um fortzufahren" : "Sign in to continue"
                color: Theme.secondary
                font.pixelSize: Theme.subheadline
                horizontalAlignment: Text.AlignHCenter
            }
        }

        Column {
            width: parent.width
            spacing: 14

            LabelledField {
                width: parent.width
                label: "E-Mail"
                placeholder: "name@example.com"
                inputMethodHints: Qt.ImhEmailCharactersOnly
                hasInitialFocus: true
                onTextChanged: login.email = text
            }
            LabelledField {
                width: parent.width
                label: L10n.isGerman ? "Passwort" : "Password"
                placeholder: "••••••••"
                isSecure: true
                onTextChanged: login.password = text
            }
            StaticText {
                width: parent.width
                visible: text.length > 0
                text: login.errorMessage
                color: Theme.red
                font.pixelSize: Theme.caption
                wrapMode: Text.Wrap
            }
        }

        Column {
            width: parent.width
            spacing: 12

            PushButton {
                width: parent.width
                look: PushButton.Accent
                verticalPadding: 12
                cornerRadius: 10
                text: L10n.isGerman ? "Anmelden" : "Sign In"
                isBusy: login.isLoading
                enabled: !login.isLoading && login.isFilled
                opacity: login.isFilled ? 1 : 0.6
                onClicked: login.signIn()
            }
            Row {
                anchors.horizontalCenter: parent.horizontalCenter
                spacing: 4

                StaticText {
                    anchors.verticalCenter: parent.verticalCenter
                    text: L10n.isGerman ? "Noch kein Konto?" : "Don't have an account?"
                    color: Theme.secondary
                    font.pixelSize: Theme.caption
                }
                PushButton {
                    anchors.verticalCenter: parent.verticalCenter
                    look: PushButton.Link
                    font.pixelSize: Theme.caption
                    text: L10n.isGerman ? "Registrieren" : "Sign Up"
                    onClicked: registerSheet.createObject(view)
                }
            }
        }
    }

    // Made anew each time, so that the form starts empty.
    Component {
        id: registerSheet
        RegisterView {
            id: sheet
            onClosed: sheet.destroy()
        }
    }
}
