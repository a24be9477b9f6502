import QtQuick
import QtQuick.Layouts
import Talvenor

/// All that lies in a window.
ScrollArea {
    id: page

    component Caption: StaticText {
        color: Theme.tertiary
        font.pixelSize: Theme.caption2
    }

    anchors.fill: parent
    padding: 20
    spacing: 18

    RowLayout {
        spacing: 40

        ColumnLayout {
            Layout.alignment: Qt.AlignTop
            spacing: 12

            Caption {
                text: "ActionButton: rest, hovered, pressed, disabled, focused"
            }
            RowLayout {
                spacing: 10
                ActionButton {
                    title: L10n.transcribe
                    icon: "text.bubble"
                    style: ActionButton.Accent
                }
                ActionButton {
                    title: L10n.transcribe
                    icon: "text.bubble"
                    style: ActionButton.Accent
                    isHovered: true
                }
                ActionButton {
                    title: L10n.transcribe
                    icon: "text.bubble"
                    style: ActionButton.Accent
                    isPressed: true
                }
                ActionButton {
                    title: L10n.transcribe
                    icon: "text.bubble"
                    style: ActionButton.Accent
                    enabled: false
                }
            }
            RowLayout {
                spacing: 10
                ActionButton {
                    title: L10n.export_
                    icon: "square.and.arrow.up"
                }
                ActionButton {
                    title: L10n.export_
                    icon: "square.and.arrow.up"
                    isHovered: true
                }
                ActionButton {
                    title: L10n.export_
                    icon: "square.and.arrow.up"
                    isPressed: true
                }
                ActionButton {
                    title: L10n.export_
                    icon: "square.and.arrow.up"
                    enabled: false
                }
                ActionButton {
                    title: L10n.export_
                    icon: "square.and.arrow.up"
                    objectName: "focused"

                    // Once there is a window.
                    Timer {
                        running: true
                        interval: 50
                        onTriggered: parent.forceActiveFocus(Qt.TabFocusReason)
                    }
                }
            }
            Caption {
                text: "PushButton: rest, hovered, pressed, busy, disabled; link, close"
            }
            RowLayout {
                spacing: 10
                PushButton {
                    text: "OK"
                    look: PushButton.Accent
                }
                PushButton {
                    text: (L10n.isGerman ? "Speichern" : "Save")
                    look: PushButton.Accent
                    isHovered: true
                }
                PushButton {
                    text: "OK"
                    look: PushButton.Accent
                    down: true
                }
                PushButton {
                    text: (L10n.isGerman ? "Speichern" : "Save")
                    look: PushButton.Accent
                    isBusy: true
                }
                PushButton {
                    text: (L10n.isGerman ? "Speichern" : "Save")
                    look: PushButton.Accent
                    enabled: false
                    opacity: 0.6
                }
            }
            RowLayout {
                spacing: 10
                PushButton {
                    text: (L10n.isGerman ? "Abbrechen" : "Cancel")
                }
                PushButton {
                    text: (L10n.isGerman ? "Abbrechen" : "Cancel")
                    isHovered: true
                }
                PushButton {
                    text: (L10n.isGerman ? "Abbrechen" : "Cancel")
                    down: true
                }
                PushButton {
                    text: (L10n.isGerman ? "Abbrechen" : "Cancel")
                    enabled: false
                }
                PushButton {
                    text: L10n.isGerman ? "Registrieren" : "Sign Up"
                    look: PushButton.Link
                }
                CloseButton {}
                CloseButton {
                    isHovered: true
                }
            }
            Caption {
                text: "DetailTabButton"
            }
            Row {
                DetailTabButton {
                    title: L10n.transcript
                    icon: "text.alignleft"
                    isSelected: true
                }
                DetailTabButton {
                    title: L10n.summary
                    icon: "sparkles"
                    isSelected: false
                }
                DetailTabButton {
                    title: L10n.participantsTab
                    icon: "person.2"
                    isSelected: false
                }
            }
            Caption {
                text: "Spinner, Badge, StatusPill, PlainButton"
            }
            RowLayout {
                spacing: 12
                Spinner {
                    color: Theme.secondary
                }
                Badge {
                    text: "Premium"
                    foreground: Theme.systemPurple
                }
                Badge {
                    text: "Basic"
                    foreground: Theme.blue
                }
                Badge {
                    text: L10n.isGerman ? "Kostenlos" : "Free"
                    foreground: Theme.secondary
                }
                PlainButton {
                    text: L10n.change
                    color: Theme.purple
                }
                PlainButton {
                    text: "Plans"
                    icon.name: "crown.fill"
                    color: Theme.purple
                    font.weight: Font.Medium
                }
                PlainButton {
                    text: L10n.back
                    icon.name: "chevron.left"
                    enabled: false
                }
            }
            EmptyState {
                Layout.preferredWidth: 380
                Layout.preferredHeight: 170
                title: L10n.noRecordingsYet
                hint: L10n.noRecordingsSubtitle
                symbol: "waveform.slash"
            }
        }
        ColumnLayout {
            Layout.alignment: Qt.AlignTop
            Layout.preferredWidth: 400
            spacing: 12

            Caption {
                text: "SettingsCard, LanguageSwitcher, SegmentedPicker, ToggleSwitch"
            }
            SettingsCard {
                Layout.fillWidth: true
                RowLayout {
                    Layout.fillWidth: true
                    IconLabel {
                        icon: "globe"
                        text: L10n.appLanguageLabel
                        font.pixelSize: Theme.subheadline
                        font.weight: Font.Medium
                    }
                    Item {
                        Layout.fillWidth: true
                    }
                    LanguageSwitcher {
                        selection: L10n.current
                        onSelected: language => L10n.current = language
                    }
                }
            }
            SettingsCard {
                Layout.fillWidth: true
                ColumnLayout {
                    Layout.fillWidth: true
                    spacing: 12
                    IconLabel {
                        icon: "waveform"
                        text: L10n.audio + " & " + L10n.transcription
                        font.pixelSize: Theme.subheadline
                        font.weight: Font.DemiBold
                    }
                    SegmentedPicker {
                        Layout.fillWidth: true
                        name: L10n.language
                        options: ["a", "b", "c"]
                        titles: ["Deutsch", "English", L10n.isGerman ? "Automatisch" : "Automatic"]
                        selection: "b"
                        onSelected: option => selection = option
                    }
                    SegmentedPicker {
                        Layout.fillWidth: true
                        enabled: false
                        name: L10n.language
                        options: ["a", "b"]
                        titles: ["Deutsch", "English"]
                        selection: "a"
                    }
                    ToggleSwitch {
                        Layout.fillWidth: true
                        text: L10n.autoTranscribeLabel
                        isOn: true
                        onToggled: value => isOn = value
                    }
                    ToggleSwitch {
                        Layout.fillWidth: true
                        text: L10n.autoSummarizeLabel
                        isOn: false
                        onToggled: value => isOn = value
                    }
                    ToggleSwitch {
                        Layout.fillWidth: true
                        enabled: false
                        text: L10n.autoSummarizeLabel
                        isOn: true
                    }
                }
            }
            Caption {
                text: "FormField: empty, filled, secure, disabled"
            }
            FormField {
                Layout.fillWidth: true
                label: "Name"
                placeholder: "Max Mustermann"
            }
            FormField {
                Layout.fillWidth: true
                label: "E-Mail"
                text: "ann@example.com"
            }
            FormField {
                Layout.fillWidth: true
                label: L10n.isGerman ? "Passwort" : "Password"
                isSecure: true
                text: "secret"
            }
            FormField {
                Layout.fillWidth: true
                enabled: false
                label: "Name"
                text: "Max Mustermann"
            }
            Caption {
                text: "Texts: title, title2, title3, headline, body, subheadline, caption; primary to quaternary"
            }
            Flow {
                Layout.fillWidth: true
                spacing: 10
                Repeater {
                    model: [[Theme.title, Font.Bold], [Theme.title2, Font.Bold], [Theme.title3, Font.Bold], [Theme.headline, Font.Bold], [Theme.body, Font.Normal], [Theme.subheadline, Font.Normal], [Theme.caption, Font.Normal]]
                    delegate: StaticText {
                        required property var modelData
                        text: "Aufnahme"
                        font.pixelSize: modelData[0]
                        font.weight: modelData[1]
                    }
                }
            }
            Row {
                spacing: 12
                Repeater {
                    model: ["primary", "secondary", "tertiary", "quaternary", "red", "orange", "yellow", "green", "systemPurple"]
                    delegate: StaticText {
                        required property string modelData
                        text: modelData
                        color: Theme[modelData]
                        font.pixelSize: Theme.caption
                    }
                }
            }
        }
    }
}
