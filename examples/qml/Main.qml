import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import Korvo.Web 1.0

ApplicationWindow {
    id: window

    required property QtObject host
    readonly property KorvoWebApi api: host.api
    // Read again whenever loginStatusChanged() comes, and when the login has expired: that changes it without the signal.
    property bool loggedIn: api.loginStatus === KorvoWebApi.LoginStatusLoggedIn
    // Outlasts what fails because of it: that is no news.
    property bool expired: false
    property string failure: ""

    function readLoginStatus() { loggedIn = api.loginStatus === KorvoWebApi.LoginStatusLoggedIn }
    function expire() {
        uploadBar.pause()
        readLoginStatus()
        expired = true
    }
    function refresh() {
        failure = ""
        api.queryRemoteProjects()
    }
    function upload(folder) {
        failure = ""
        uploadBar.start(folder)
    }

    objectName: "window"
    title: "Korvo Quick"
    width: 560
    height: 640
    visible: true
    background: Rectangle { color: window.color }

    Connections {
        target: window.api

        // A token may have run out while the login was still being brought to its end, and before that was told.
        function onLoginResult(userName, loginResult) {
            window.readLoginStatus()
            if (loginResult !== KorvoWebApi.LoginResultSuccess)
                return
            window.expired = false
            if (window.loggedIn)
                window.refresh()
            else
                window.expire()
        }
        function onLoginStatusChanged() { window.readLoginStatus() }
        function onLoginExpired() { window.expire() }
        function onErrorOccurred(error) { window.failure = window.host.errorText(error) }
        function onQueryRemoteProjectsError(error) { window.failure = window.host.errorText(error) }
    }

    onLoggedInChanged: if (loggedIn) uploadBar.resume()

    header: ToolBar {
        RowLayout {
            anchors.fill: parent
            anchors.leftMargin: 12
            anchors.rightMargin: 8

            Label {
                Layout.fillWidth: true
                objectName: "userLabel"
                textFormat: Text.PlainText
                elide: Text.ElideRight
                text: window.loggedIn ? window.api.currentUserFirstName + " " + window.api.currentUserLastName
                                      : qsTr("Not logged in")
            }
            ToolButton {
                objectName: "refreshButton"
                text: qsTr("&Refresh")
                visible: window.loggedIn
                onClicked: window.refresh()
            }
            ToolButton {
                objectName: "logoutButton"
                text: qsTr("&Log out")
                visible: window.loggedIn
                // What a transfer sends without a login is refused.
                onClicked: { uploadBar.pause(); window.api.logout() }
            }
        }
    }

    ColumnLayout {
        anchors.fill: parent
        spacing: 0

        Label {
            id: problem
            objectName: "problem"
            Layout.fillWidth: true
            padding: 10
            visible: text !== ""
            text: window.expired ? qsTr("Your login has expired. Log in again to go on.") : window.failure
            wrapMode: Text.Wrap
            textFormat: Text.PlainText
            color: "#8a1c14"
            background: Rectangle { color: "#fbe3e0" }
        }
        LoginPage {
            Layout.fillWidth: true
            Layout.fillHeight: true
            visible: !window.loggedIn
            host: window.host
        }
        ProjectsPage {
            Layout.fillWidth: true
            Layout.fillHeight: true
            visible: window.loggedIn
            host: window.host
            onFolderChosen: window.upload(folder)
        }
        UploadBar {
            id: uploadBar
            Layout.fillWidth: true
            host: window.host
        }
    }
}
