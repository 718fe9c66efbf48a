import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import Korvo.Web 1.0

// User name and password; the field for the code appears when the account asks for a second factor.
Item {
    id: page

    required property QtObject host
    readonly property KorvoWebApi api: host.api
    property bool codeWanted: false
    property bool waiting: false

    function proceed() {
        answer.text = ""
        waiting = true
        if (codeWanted)
            host.sendCode(code.text)
        else
            api.login(user.text, password.text)
    }

    Connections {
        target: page.api

        function onTokenAuthenticationNeeded() {
            page.waiting = false
            page.codeWanted = true
            code.forceActiveFocus()
        }
        function onLoginResult(userName, loginResult) {
            page.waiting = false
            switch (loginResult) {
            case KorvoWebApi.LoginResultSuccess:
                page.codeWanted = false
                password.clear()
                code.clear()
                break
            case KorvoWebApi.LoginResultFalseCredentials:
                answer.text = qsTr("User name, password or code is wrong.")
                break
            case KorvoWebApi.LoginResultTimeOut:
                answer.text = qsTr("The platform gave no usable answer.")
                break
            case KorvoWebApi.LoginResultCancelled:
                answer.text = qsTr("The login was cancelled.")
                break
            }
        }
    }

    ColumnLayout {
        anchors.centerIn: parent
        width: Math.min(parent.width - 48, 340)
        spacing: 10

        Label {
            text: qsTr("Log in")
            font.pixelSize: 24
        }
        TextField {
            id: user
            objectName: "user"
            Layout.fillWidth: true
            placeholderText: qsTr("User name")
            enabled: !page.codeWanted
            focus: true
            selectByMouse: true
        }
        TextField {
            id: password
            objectName: "password"
            Layout.fillWidth: true
            placeholderText: qsTr("Password")
            enabled: !page.codeWanted
            echoMode: TextInput.Password
            onAccepted: if (loginButton.enabled) page.proceed()
        }
        TextField {
            id: code
            objectName: "code"
            Layout.fillWidth: true
            visible: page.codeWanted
            placeholderText: qsTr("Code of the second factor")
            inputMethodHints: Qt.ImhDigitsOnly
            onAccepted: if (loginButton.enabled) page.proceed()
        }
        Label {
            id: answer
            objectName: "answer"
            Layout.fillWidth: true
            wrapMode: Text.Wrap
            color: "#b3261e"
            visible: text !== ""
        }
        RowLayout {
            Layout.fillWidth: true

            BusyIndicator {
                implicitHeight: 28
                implicitWidth: 28
                running: page.waiting
            }
            Item { Layout.fillWidth: true }
            Button {
                text: qsTr("&Back")
                visible: page.codeWanted
                onClicked: { page.codeWanted = false; answer.text = "" }
            }
            Button {
                id: loginButton
                objectName: "loginButton"
                text: qsTr("&Log in")
                highlighted: true
                enabled: !page.waiting && user.text !== "" && password.text !== "" && (!page.codeWanted || code.text !== "")
                onClicked: page.proceed()
            }
        }
    }
}
