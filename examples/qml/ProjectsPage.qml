import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15

// The list of projects; a folder dropped on it, or typed below it, is chosen for an upload.
Item {
    id: page

    required property QtObject host
    signal folderChosen(url folder)

    readonly property bool canUpload: path.text !== "" && !host.api.anyUploadActive

    function choose() {
        folderChosen(host.addressOf(path.text))
        path.clear()
    }

    DropArea {
        id: dropArea
        anchors.fill: parent
        keys: ["text/uri-list"]
        onDropped: drop.urls.forEach(url => page.folderChosen(url))
    }
    Rectangle {
        anchors.fill: parent
        anchors.margins: 6
        radius: 6
        color: "transparent"
        border.width: 2
        border.color: "#1f6fb2"
        visible: dropArea.containsDrag
    }

    ColumnLayout {
        anchors.fill: parent
        anchors.margins: 12
        spacing: 8

        ListView {
            id: list
            objectName: "projects"
            Layout.fillWidth: true
            Layout.fillHeight: true
            clip: true
            model: page.host.projects
            ScrollBar.vertical: ScrollBar {}

            delegate: ItemDelegate {
                width: list.width
                contentItem: ColumnLayout {
                    spacing: 2
                    Label {
                        Layout.fillWidth: true
                        text: model.name
                        textFormat: Text.PlainText
                        elide: Text.ElideRight
                        font.bold: true
                    }
                    Label {
                        Layout.fillWidth: true
                        text: model.created + " · " + model.size + (model.importedByWeb ? " · " + qsTr("imported by web") : "")
                        opacity: 0.7
                    }
                }
            }

            Label {
                anchors.centerIn: parent
                visible: list.count === 0
                text: qsTr("No projects yet – drop a folder here")
                opacity: 0.7
            }
        }
        RowLayout {
            TextField {
                id: path
                objectName: "path"
                Layout.fillWidth: true
                placeholderText: qsTr("Drop a folder, or type its path")
                selectByMouse: true
                onAccepted: if (page.canUpload) page.choose()
            }
            Button {
                objectName: "uploadButton"
                text: qsTr("&Upload")
                enabled: page.canUpload
                onClicked: page.choose()
            }
        }
    }
}
