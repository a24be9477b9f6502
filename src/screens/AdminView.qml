import QtQuick
import QtQuick.Layouts
import Talvenor

/// The administrators' console, a sheet.
Sheet {
    id: sheet
    objectName: "AdminView"

    title: L10n.isGerman ? "Admin-Panel" : "Admin Panel"
    idealWidth: Theme.scaled(480)
    padding: 0

    contentItem: ColumnLayout {
        spacing: 0

        SheetTitleBar {
            Layout.fillWidth: true
            title: sheet.title
            onCloseRequested: sheet.close()
        }
        Divider {
            Layout.fillWidth: true
        }
        ScrollArea {
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.preferredHeight: implicitHeight
            padding: 24

            StaticText {
                Layout.fillWidth: true
                text: L10n.isGerman ? "Die Konsole ist noch nicht Teil dieser Version." : "The console is not part of this version yet."
                color: Theme.secondary
                font.pixelSize: Theme.subheadline
                wrapMode: Text.Wrap
            }
        }
    }
}
