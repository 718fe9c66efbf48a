import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import Korvo.Web 1.0

// One upload at a time, with its progress.
Pane {
    id: bar

    required property QtObject host
    readonly property KorvoWebApi api: host.api
    property int uploadId: 0
    property bool paused: false
    property bool ended: false
    property bool finished: false
    readonly property bool running: uploadId !== 0 && !ended
    property int percent: 0
    property int filesTotal: 0
    property int filesCompleted: 0
    readonly property string progressText: finished ? (host.uploadConfirmed ? qsTr("Uploaded") : qsTr("Waiting for the confirmation…"))
                                   : ended ? qsTr("Ended")
                                   : paused ? qsTr("Paused") : percent + " %"

    objectName: "uploadBar"
    visible: uploadId !== 0

    function start(folder) {
        if (running)
            return
        ended = false
        finished = false
        paused = false
        percent = 0
        filesTotal = 0
        filesCompleted = 0
        uploadId = host.uploadFolder(folder)
    }
    function pause() {
        if (!running || paused)
            return
        paused = true
        api.pauseUpload(uploadId)
    }
    function resume() {
        if (!paused)
            return
        paused = false
        api.resumeUpload(uploadId)
    }

    Connections {
        target: bar.api

        function onUploadTotalProgressChanged(uploadId, value) { if (uploadId === bar.uploadId) bar.percent = value }
        function onFilesToUploadTotalChanged(uploadId, value) { if (uploadId === bar.uploadId) bar.filesTotal = value }
        function onCompletedUploadFilesChanged(uploadId, value) { if (uploadId === bar.uploadId) bar.filesCompleted = value }
        function onUploadActiveChanged(uploadId, active) { if (uploadId === bar.uploadId) bar.ended = !active }
        function onUploadFinished(uploadId) { if (uploadId === bar.uploadId) bar.finished = true }
    }

    ColumnLayout {
        anchors.fill: parent

        RowLayout {
            Label {
                objectName: "uploadState"
                Layout.fillWidth: true
                text: qsTr("%1 of %2 files").arg(bar.filesCompleted).arg(bar.filesTotal) + " · " + bar.progressText
            }
            Button {
                objectName: "pauseButton"
                visible: bar.running
                text: bar.paused ? qsTr("&Resume") : qsTr("&Pause")
                onClicked: bar.paused ? bar.resume() : bar.pause()
            }
            Button {
                objectName: "abortButton"
                visible: bar.running
                text: qsTr("&Abort")
                onClicked: bar.api.abortUpload(bar.uploadId)
            }
        }
        ProgressBar {
            Layout.fillWidth: true
            from: 0
            to: 100
            value: bar.percent
        }
    }
}
