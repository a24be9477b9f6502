import QtQuick
import Talvenor

/// What the window shows while nobody is signed in.
FocusScope {
    id: view

    property url iconSource: AppIcon.source
    property bool showRegister: false

    focus: true

    LoginState {
        id: login
    }

    Rectangle {
        anchors.fill: parent
        color: Theme.windowBackground
    }
    RadialFill {
        anchors.fill: parent
        color: Theme.withOpacity(Theme.purple, Theme.isDark ? 0.08 : 0.04)
        startRadius: 50
        endRadius: 400
    }

    // In the middle of the window; where a long message makes it higher than that, it scrolls.
    ScrollArea {
        id: area
        anchors.fill: parent

        Item {
            implicitHeight: Math.max(area.height, column.implicitHeight + 48)
            implicitWidth: area.width

            Column {
                id: column
                objectName: "column"
                anchors.centerIn: parent
                width: 340
                spacing: 32

                Column {
                    objectName: "header"
                    width: parent.width
                    spacing: 8

                    ApplicationIcon {
                        objectName: "icon"
                        anchors.horizontalCenter: parent.horizontalCenter
                        source: view.iconSource
                    }
                    StaticText {
                        objectName: "title"
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
                    objectName: "form"
                    width: parent.width
                    spacing: 14

                    FormField {
                        objectName: "email"
                        width: parent.width
                        label: "E-Mail"
                        placeholder: "name@example.com"
                        inputMethodHints: Qt.ImhEmailCharactersOnly
                        hasInitialFocus: true
                        onTextChanged: login.email = text
                    }
                    FormField {
                        objectName: "password"
                        width: parent.width
                        label: L10n.isGerman ? "Passwort" : "Password"
                        placeholder: "••••••••"
                        isSecure: true
                        onTextChanged: login.password = text
                    }
                    StaticText {
                        objectName: "error"
                        width: parent.width
                        visible: text.length > 0
                        text: Theme.bounded(login.errorMessage)
                        color: Theme.redText
                        font.pixelSize: Theme.caption
                        wrapMode: Text.Wrap
                    }
                }

                Column {
                    objectName: "actions"
                    width: parent.width
                    spacing: 12

                    SubmitButton {
                        objectName: "submit"
                        width: parent.width
                        text: L10n.isGerman ? "Anmelden" : "Sign In"
                        isBusy: login.isLoading
                        isReady: login.isFilled
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
                        PlainButton {
                            objectName: "signUp"
                            anchors.verticalCenter: parent.verticalCenter
                            text: L10n.isGerman ? "Registrieren" : "Sign Up"
                            color: Theme.purple
                            font.weight: Font.DemiBold
                            onClicked: view.showRegister = true
                        }
                    }
                }
            }
        }
    }
    SheetPresenter {
        isPresented: view.showRegister
        source: "RegisterView.qml"
        onDismissed: view.showRegister = false
    }
}
