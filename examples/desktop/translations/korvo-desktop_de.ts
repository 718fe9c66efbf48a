<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>ErrorText</name>
    <message>
        <source>The platform could not be reached</source>
        <translation>Die Plattform ist nicht erreichbar</translation>
    </message>
    <message>
        <source>The connection failed, or the server refused the request.</source>
        <translation>Die Verbindung ist gescheitert, oder der Server hat die Anfrage abgelehnt.</translation>
    </message>
    <message>
        <source>Check the network connection, and proxy and authority file in the network settings. The log has the details.</source>
        <translation>Prüfen Sie die Netzwerkverbindung sowie Proxy und Zertifikatsdatei in den Netzwerkeinstellungen. Einzelheiten stehen im Protokoll.</translation>
    </message>
    <message>
        <source>The login was refused</source>
        <translation>Die Anmeldung wurde abgelehnt</translation>
    </message>
    <message>
        <source>User name, password or code is wrong.</source>
        <translation>Benutzername, Passwort oder Code ist falsch.</translation>
    </message>
    <message>
        <source>Type them again. &quot;Forgotten password&quot; sends you a new password.</source>
        <translation>Geben Sie sie noch einmal ein. „Passwort vergessen“ schickt Ihnen ein neues Passwort.</translation>
    </message>
    <message>
        <source>The platform does not know this file</source>
        <translation>Die Plattform kennt diese Datei nicht</translation>
    </message>
    <message>
        <source>The server answered, but it has no link for the file.</source>
        <translation>Der Server hat geantwortet, hat aber keinen Link für die Datei.</translation>
    </message>
    <message>
        <source>Ask for the list again; the file may have been removed.</source>
        <translation>Rufen Sie die Liste neu ab; die Datei wurde vielleicht entfernt.</translation>
    </message>
    <message>
        <source>The platform did not answer in time</source>
        <translation>Die Plattform hat nicht rechtzeitig geantwortet</translation>
    </message>
    <message>
        <source>The server is busy, or the connection has broken down.</source>
        <translation>Der Server ist überlastet, oder die Verbindung ist unterbrochen.</translation>
    </message>
    <message>
        <source>Check the network connection and try again later.</source>
        <translation>Prüfen Sie die Netzwerkverbindung und versuchen Sie es später noch einmal.</translation>
    </message>
    <message>
        <source>The platform reports a failure of its own</source>
        <translation>Die Plattform meldet einen eigenen Fehler</translation>
    </message>
    <message>
        <source>The server could not carry out the request (HTTP status 500).</source>
        <translation>Der Server konnte die Anfrage nicht ausführen (HTTP-Status 500).</translation>
    </message>
    <message>
        <source>Try again later. If it stays, tell the operator of the platform.</source>
        <translation>Versuchen Sie es später noch einmal. Bleibt es dabei, verständigen Sie den Betreiber der Plattform.</translation>
    </message>
    <message>
        <source>The login is no longer valid</source>
        <translation>Die Anmeldung gilt nicht mehr</translation>
    </message>
    <message>
        <source>The server asks for a new login.</source>
        <translation>Der Server verlangt eine neue Anmeldung.</translation>
    </message>
    <message>
        <source>Log in again, then repeat what you were doing.</source>
        <translation>Melden Sie sich neu an und wiederholen Sie den letzten Schritt.</translation>
    </message>
    <message>
        <source>A file was cut off</source>
        <translation>Eine Datei wurde abgeschnitten</translation>
    </message>
    <message>
        <source>It was on its way when the transfer was aborted.</source>
        <translation>Sie war unterwegs, als die Übertragung abgebrochen wurde.</translation>
    </message>
    <message>
        <source>Nothing needs to be done.</source>
        <translation>Es ist nichts zu tun.</translation>
    </message>
    <message>
        <source>The answer to the login cannot be read</source>
        <translation>Die Antwort auf die Anmeldung ist nicht lesbar</translation>
    </message>
    <message>
        <source>Something between this computer and the platform answered instead, a proxy perhaps, or nothing did.</source>
        <translation>Statt der Plattform hat etwas anderes geantwortet, vielleicht ein Proxy, oder es kam gar keine Antwort.</translation>
    </message>
    <message>
        <source>Check proxy and authority file in the network settings, then log in again.</source>
        <translation>Prüfen Sie Proxy und Zertifikatsdatei in den Netzwerkeinstellungen und melden Sie sich dann neu an.</translation>
    </message>
    <message>
        <source>A local file cannot be read</source>
        <translation>Eine lokale Datei ist nicht lesbar</translation>
    </message>
    <message>
        <source>It is missing, locked by another program, changed while it was sent, or you lack the right to read it.</source>
        <translation>Sie fehlt, ist von einem anderen Programm gesperrt, wurde beim Senden geändert, oder Sie dürfen sie nicht lesen.</translation>
    </message>
    <message>
        <source>Close other programs that use the project, check the file&apos;s rights, then try again.</source>
        <translation>Schließen Sie andere Programme, die das Projekt benutzen, prüfen Sie die Rechte der Datei und versuchen Sie es noch einmal.</translation>
    </message>
    <message>
        <source>The creation date is missing</source>
        <translation>Das Erstellungsdatum fehlt</translation>
    </message>
    <message>
        <source>The project has no valid creation date.</source>
        <translation>Das Projekt hat kein gültiges Erstellungsdatum.</translation>
    </message>
    <message>
        <source>Upload the project again and give a date.</source>
        <translation>Laden Sie das Projekt noch einmal hoch und geben Sie ein Datum an.</translation>
    </message>
    <message>
        <source>A download folder cannot be made</source>
        <translation>Ein Ordner für den Download lässt sich nicht anlegen</translation>
    </message>
    <message>
        <source>The folder cannot be created here, or the name of a file would lead out of it.</source>
        <translation>Der Ordner lässt sich hier nicht anlegen, oder der Name einer Datei würde aus ihm hinausführen.</translation>
    </message>
    <message>
        <source>Choose another folder. If it stays, the project on the platform has a damaged file name.</source>
        <translation>Wählen Sie einen anderen Ordner. Bleibt es dabei, hat das Projekt auf der Plattform einen beschädigten Dateinamen.</translation>
    </message>
    <message>
        <source>A downloaded file cannot be written</source>
        <translation>Eine heruntergeladene Datei lässt sich nicht schreiben</translation>
    </message>
    <message>
        <source>The disk is full, or the folder is write-protected.</source>
        <translation>Der Datenträger ist voll, oder der Ordner ist schreibgeschützt.</translation>
    </message>
    <message>
        <source>Make room on the disk, then try again: files that have arrived are kept.</source>
        <translation>Schaffen Sie Platz und versuchen Sie es noch einmal: Angekommene Dateien bleiben erhalten.</translation>
    </message>
    <message>
        <source>The request was incomplete</source>
        <translation>Die Anfrage war unvollständig</translation>
    </message>
    <message>
        <source>A name, an id or a folder is empty.</source>
        <translation>Ein Name, eine Kennung oder ein Ordner ist leer.</translation>
    </message>
    <message>
        <source>Fill in every field, then try again. The log lists the values.</source>
        <translation>Füllen Sie alle Felder aus und versuchen Sie es noch einmal. Das Protokoll nennt die Werte.</translation>
    </message>
    <message>
        <source>Something failed (code %1)</source>
        <translation>Etwas ist fehlgeschlagen (Code %1)</translation>
    </message>
    <message>
        <source>This program does not know the code.</source>
        <translation>Dieses Programm kennt den Code nicht.</translation>
    </message>
    <message>
        <source>The log has the details.</source>
        <translation>Einzelheiten stehen im Protokoll.</translation>
    </message>
    <message>
        <source>The login was cancelled</source>
        <translation>Die Anmeldung wurde abgebrochen</translation>
    </message>
</context>
<context>
    <name>Korvo::Desktop::DownloadDialog</name>
    <message>
        <source>&amp;Download</source>
        <translation>&amp;Herunterladen</translation>
    </message>
    <message>
        <source>Download a project</source>
        <translation>Projekt herunterladen</translation>
    </message>
    <message>
        <source>&amp;Browse…</source>
        <translation>&amp;Durchsuchen…</translation>
    </message>
    <message>
        <source>Project:</source>
        <translation>Projekt:</translation>
    </message>
    <message>
        <source>Size:</source>
        <translation>Größe:</translation>
    </message>
    <message>
        <source>&amp;Into folder:</source>
        <translation>&amp;In Ordner:</translation>
    </message>
    <message>
        <source>&amp;Files at once:</source>
        <translation>&amp;Gleichzeitige Dateien:</translation>
    </message>
    <message>
        <source>Aborting the download removes this folder with everything in it.</source>
        <translation>Ein Abbruch des Downloads entfernt diesen Ordner mit allem, was darin ist.</translation>
    </message>
    <message>
        <source>Where shall the project&apos;s folder be made?</source>
        <translation>Wo soll der Ordner des Projekts angelegt werden?</translation>
    </message>
    <message>
        <source>This is a file, not a folder.</source>
        <translation>Das ist eine Datei, kein Ordner.</translation>
    </message>
    <message>
        <source>The folder is not empty. Files of the same name are replaced unless they have the same size, and an abort would remove everything in it.</source>
        <translation>Der Ordner ist nicht leer. Dateien gleichen Namens werden ersetzt, wenn sie nicht gleich groß sind, und ein Abbruch würde alles darin entfernen.</translation>
    </message>
</context>
<context>
    <name>Korvo::Desktop::DropOverlay</name>
    <message>
        <source>Drop to upload &quot;%1&quot;</source>
        <translation>Ablegen, um „%1“ hochzuladen</translation>
    </message>
    <message numerus="yes">
        <source>Drop to upload %n folder(s)</source>
        <translation>
            <numerusform>Ablegen, um %n Ordner hochzuladen</numerusform>
            <numerusform>Ablegen, um %n Ordner hochzuladen</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>Korvo::Desktop::LogModel</name>
    <message>
        <source>Failure</source>
        <translation>Fehler</translation>
    </message>
    <message>
        <source>Warning</source>
        <translation>Warnung</translation>
    </message>
    <message>
        <source>Note</source>
        <translation>Hinweis</translation>
    </message>
    <message>
        <source>Time</source>
        <translation>Zeit</translation>
    </message>
    <message>
        <source>Level</source>
        <translation>Stufe</translation>
    </message>
    <message>
        <source>From</source>
        <translation>Von</translation>
    </message>
    <message>
        <source>Text</source>
        <translation>Text</translation>
    </message>
</context>
<context>
    <name>Korvo::Desktop::LogView</name>
    <message>
        <source>The log is empty</source>
        <translation>Das Protokoll ist leer</translation>
    </message>
    <message>
        <source>The library logs failures only.</source>
        <translation>Die Bibliothek protokolliert nur Fehler.</translation>
    </message>
    <message>
        <source>Log</source>
        <translation>Protokoll</translation>
    </message>
    <message>
        <source>Filter the log</source>
        <translation>Protokoll filtern</translation>
    </message>
    <message>
        <source>&amp;Copy all</source>
        <translation>Alles &amp;kopieren</translation>
    </message>
    <message>
        <source>C&amp;lear</source>
        <translation>&amp;Leeren</translation>
    </message>
</context>
<context>
    <name>Korvo::Desktop::LoginDialog</name>
    <message>
        <source>&amp;Log in</source>
        <translation>&amp;Anmelden</translation>
    </message>
    <message>
        <source>&amp;Forgotten password</source>
        <translation>Passwort &amp;vergessen</translation>
    </message>
    <message>
        <source>Log in</source>
        <translation>Anmelden</translation>
    </message>
    <message>
        <source>&amp;Network…</source>
        <translation>&amp;Netzwerk…</translation>
    </message>
    <message>
        <source>&amp;User name:</source>
        <translation>&amp;Benutzername:</translation>
    </message>
    <message>
        <source>&amp;Password:</source>
        <translation>&amp;Passwort:</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>Ab&amp;brechen</translation>
    </message>
    <message>
        <source>This account asks for a second factor. Type the code that you have received.</source>
        <translation>Dieses Konto verlangt einen zweiten Faktor. Geben Sie den Code ein, den Sie erhalten haben.</translation>
    </message>
    <message>
        <source>&amp;Back</source>
        <translation>&amp;Zurück</translation>
    </message>
    <message>
        <source>&amp;Code:</source>
        <translation>&amp;Code:</translation>
    </message>
    <message>
        <source>Logging in…</source>
        <translation>Anmeldung läuft…</translation>
    </message>
    <message>
        <source>Checking the code…</source>
        <translation>Code wird geprüft…</translation>
    </message>
    <message>
        <source>The platform has been asked to send a new password to %1. Look at your mail.</source>
        <translation>Die Plattform wurde gebeten, ein neues Passwort an %1 zu schicken. Sehen Sie in Ihrer Post nach.</translation>
    </message>
    <message>
        <source>Log in to the platform</source>
        <translation>Anmeldung bei der Plattform</translation>
    </message>
    <message>
        <source>Second factor</source>
        <translation>Zweiter Faktor</translation>
    </message>
</context>
<context>
    <name>Korvo::Desktop::MainWindow</name>
    <message>
        <source>You are logged out.</source>
        <translation>Sie sind abgemeldet.</translation>
    </message>
    <message>
        <source>Transfers are paused and go on when you log in again.</source>
        <translation>Übertragungen sind angehalten und gehen weiter, wenn Sie sich wieder anmelden.</translation>
    </message>
    <message>
        <source>Your login has expired. Log in again to go on.</source>
        <translation>Ihre Anmeldung ist abgelaufen. Melden Sie sich neu an, um weiterzumachen.</translation>
    </message>
    <message>
        <source>&amp;Log out</source>
        <translation>&amp;Abmelden</translation>
    </message>
    <message>
        <source>&amp;Log in…</source>
        <translation>&amp;Anmelden…</translation>
    </message>
    <message>
        <source>Not logged in</source>
        <translation>Nicht angemeldet</translation>
    </message>
    <message>
        <source>Log in to see your projects</source>
        <translation>Melden Sie sich an, um Ihre Projekte zu sehen</translation>
    </message>
    <message>
        <source>The projects could not be listed</source>
        <translation>Die Projekte ließen sich nicht auflisten</translation>
    </message>
    <message>
        <source>List of projects</source>
        <translation>Projektliste</translation>
    </message>
    <message>
        <source>Which project folder is to be uploaded?</source>
        <translation>Welcher Projektordner soll hochgeladen werden?</translation>
    </message>
    <message>
        <source>The download of &quot;%1&quot; is not complete.</source>
        <translation>Der Download von „%1“ ist unvollständig.</translation>
    </message>
    <message numerus="yes">
        <source>%1 of %n file(s) have arrived. Try it again: these are kept.</source>
        <translation>
            <numerusform>%1 von %n Datei ist angekommen. Versuchen Sie es noch einmal: Sie bleibt erhalten.</numerusform>
            <numerusform>%1 von %n Dateien sind angekommen. Versuchen Sie es noch einmal: Sie bleiben erhalten.</numerusform>
        </translation>
    </message>
    <message>
        <source>Login</source>
        <translation>Anmeldung</translation>
    </message>
    <message>
        <source>Quickview data of %1</source>
        <translation>Quickview-Daten von %1</translation>
    </message>
    <message>
        <source>Pictures and videos of %1</source>
        <translation>Bilder und Videos von %1</translation>
    </message>
    <message>
        <source>Platform</source>
        <translation>Plattform</translation>
    </message>
    <message>
        <source>&amp;Transfers</source>
        <translation>Ü&amp;bertragungen</translation>
    </message>
    <message>
        <source>&amp;Problems</source>
        <translation>&amp;Probleme</translation>
    </message>
    <message>
        <source>One moment.</source>
        <translation>Einen Augenblick.</translation>
    </message>
    <message>
        <source>The platform still has to confirm what has been sent; then the program ends. Close the window again to leave at once.</source>
        <translation>Die Plattform muss noch bestätigen, was gesendet wurde; dann endet das Programm. Schließen Sie das Fenster noch einmal, um es sofort zu verlassen.</translation>
    </message>
    <message>
        <source>Transfers are running</source>
        <translation>Übertragungen laufen</translation>
    </message>
    <message>
        <source>Leave while transfers are running?</source>
        <translation>Trotz laufender Übertragungen beenden?</translation>
    </message>
    <message>
        <source>They are cut off. Files that have arrived stay; an upload can be done again later.</source>
        <translation>Sie werden abgeschnitten. Angekommene Dateien bleiben; ein Upload kann später wiederholt werden.</translation>
    </message>
    <message>
        <source>&amp;Leave</source>
        <translation>B&amp;eenden</translation>
    </message>
    <message>
        <source>&amp;Stay</source>
        <translation>&amp;Bleiben</translation>
    </message>
    <message>
        <source>About Korvo Desktop</source>
        <translation>Über Korvo Desktop</translation>
    </message>
    <message>
        <source>A sample application for NQKorvoWeb: projects of sewer inspections, to the platform and back.</source>
        <translation>Eine Beispielanwendung für NQKorvoWeb: Projekte der Kanalinspektion auf die Plattform und zurück.</translation>
    </message>
    <message>
        <source>&amp;Upload folder…</source>
        <translation>Ordner &amp;hochladen…</translation>
    </message>
    <message>
        <source>&amp;Download…</source>
        <translation>Herunter&amp;laden…</translation>
    </message>
    <message>
        <source>&amp;Pictures and videos</source>
        <translation>&amp;Bilder und Videos</translation>
    </message>
    <message>
        <source>&amp;Quickview data</source>
        <translation>&amp;Quickview-Daten</translation>
    </message>
    <message>
        <source>&amp;Refresh</source>
        <translation>&amp;Aktualisieren</translation>
    </message>
    <message>
        <source>&amp;Network settings…</source>
        <translation>&amp;Netzwerkeinstellungen…</translation>
    </message>
    <message>
        <source>&amp;About Korvo Desktop</source>
        <translation>&amp;Über Korvo Desktop</translation>
    </message>
    <message>
        <source>&amp;Find a project</source>
        <translation>Projekt &amp;suchen</translation>
    </message>
    <message>
        <source>&amp;Log</source>
        <translation>P&amp;rotokoll</translation>
    </message>
    <message>
        <source>&amp;Project</source>
        <translation>&amp;Projekt</translation>
    </message>
    <message>
        <source>&amp;Transfer</source>
        <translation>Ü&amp;bertragung</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Ansicht</translation>
    </message>
    <message>
        <source>&amp;Appearance</source>
        <translation>&amp;Erscheinungsbild</translation>
    </message>
    <message>
        <source>&amp;Account</source>
        <translation>&amp;Konto</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>As the &amp;system</source>
        <translation>Wie das &amp;System</translation>
    </message>
    <message>
        <source>&amp;Light</source>
        <translation>&amp;Hell</translation>
    </message>
    <message>
        <source>&amp;Dark</source>
        <translation>&amp;Dunkel</translation>
    </message>
    <message>
        <source>Tools</source>
        <translation>Werkzeuge</translation>
    </message>
    <message>
        <source>Account</source>
        <translation>Konto</translation>
    </message>
    <message>
        <source>E&amp;xit</source>
        <translation>B&amp;eenden</translation>
    </message>
    <message>
        <source>Transfers</source>
        <translation>Übertragungen</translation>
    </message>
    <message>
        <source>Transfers (%1)</source>
        <translation>Übertragungen (%1)</translation>
    </message>
    <message>
        <source>Problems</source>
        <translation>Probleme</translation>
    </message>
    <message>
        <source>Problems (%1)</source>
        <translation>Probleme (%1)</translation>
    </message>
    <message>
        <source>Log</source>
        <translation>Protokoll</translation>
    </message>
</context>
<context>
    <name>Korvo::Desktop::MediaView</name>
    <message>
        <source>&amp;Save as…</source>
        <translation>&amp;Speichern unter…</translation>
    </message>
    <message>
        <source>Pictures and videos</source>
        <translation>Bilder und Videos</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>&amp;Schließen</translation>
    </message>
    <message>
        <source>Pictures and videos of %1</source>
        <translation>Bilder und Videos von %1</translation>
    </message>
    <message>
        <source>Asking the platform…</source>
        <translation>Die Plattform wird gefragt…</translation>
    </message>
    <message numerus="yes">
        <source>%n file(s)</source>
        <translation>
            <numerusform>%n Datei</numerusform>
            <numerusform>%n Dateien</numerusform>
        </translation>
    </message>
    <message>
        <source>This project has no pictures or videos</source>
        <translation>Dieses Projekt hat keine Bilder oder Videos</translation>
    </message>
</context>
<context>
    <name>Korvo::Desktop::MessageBar</name>
    <message>
        <source>Close this message</source>
        <translation>Diese Meldung schließen</translation>
    </message>
</context>
<context>
    <name>Korvo::Desktop::NetworkDialog</name>
    <message>
        <source>Network settings</source>
        <translation>Netzwerkeinstellungen</translation>
    </message>
    <message>
        <source>New settings hold for connections that are opened from now on.</source>
        <translation>Neue Einstellungen gelten für Verbindungen, die ab jetzt geöffnet werden.</translation>
    </message>
    <message>
        <source>As the system is set up</source>
        <translation>Wie das System eingestellt ist</translation>
    </message>
    <message>
        <source>No proxy</source>
        <translation>Kein Proxy</translation>
    </message>
    <message>
        <source>This HTTP proxy</source>
        <translation>Dieser HTTP-Proxy</translation>
    </message>
    <message>
        <source>kept until the program ends</source>
        <translation>wird bis zum Programmende behalten</translation>
    </message>
    <message>
        <source>Proxy</source>
        <translation>Proxy</translation>
    </message>
    <message>
        <source>&amp;Connect through:</source>
        <translation>&amp;Verbinden über:</translation>
    </message>
    <message>
        <source>&amp;Host:</source>
        <translation>&amp;Rechner:</translation>
    </message>
    <message>
        <source>&amp;Port:</source>
        <translation>&amp;Port:</translation>
    </message>
    <message>
        <source>&amp;User name:</source>
        <translation>&amp;Benutzername:</translation>
    </message>
    <message>
        <source>Pass&amp;word:</source>
        <translation>Pass&amp;wort:</translation>
    </message>
    <message>
        <source>&amp;Browse…</source>
        <translation>&amp;Durchsuchen…</translation>
    </message>
    <message>
        <source>only those of the system</source>
        <translation>nur die des Systems</translation>
    </message>
    <message>
        <source>Trusted authority</source>
        <translation>Vertrauenswürdige Zertifizierungsstelle</translation>
    </message>
    <message>
        <source>PEM &amp;file:</source>
        <translation>PEM-&amp;Datei:</translation>
    </message>
    <message>
        <source>Needed when your company&apos;s network replaces certificates, or for a platform of your own.</source>
        <translation>Nötig, wenn das Netz Ihrer Firma Zertifikate austauscht, oder für eine eigene Plattform.</translation>
    </message>
    <message>
        <source>Certificates (*.pem *.crt *.cer);;All files (*)</source>
        <translation>Zertifikate (*.pem *.crt *.cer);;Alle Dateien (*)</translation>
    </message>
</context>
<context>
    <name>Korvo::Desktop::ProblemModel</name>
    <message>
        <source>code %1</source>
        <translation>Code %1</translation>
    </message>
</context>
<context>
    <name>Korvo::Desktop::ProblemView</name>
    <message>
        <source>Problems</source>
        <translation>Probleme</translation>
    </message>
    <message>
        <source>&amp;Copy</source>
        <translation>&amp;Kopieren</translation>
    </message>
    <message>
        <source>C&amp;lear</source>
        <translation>&amp;Leeren</translation>
    </message>
    <message>
        <source>No problems</source>
        <translation>Keine Probleme</translation>
    </message>
    <message>
        <source>What fails is explained here.</source>
        <translation>Was fehlschlägt, wird hier erklärt.</translation>
    </message>
</context>
<context>
    <name>Korvo::Desktop::ProjectTableModel</name>
    <message>
        <source>Yes</source>
        <translation>Ja</translation>
    </message>
    <message>
        <source>No</source>
        <translation>Nein</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Created</source>
        <translation>Erstellt</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>Größe</translation>
    </message>
    <message>
        <source>Imported by web</source>
        <translation>Import über Web</translation>
    </message>
</context>
<context>
    <name>Korvo::Desktop::ProjectsPage</name>
    <message>
        <source>&amp;Show all projects</source>
        <translation>&amp;Alle Projekte zeigen</translation>
    </message>
    <message>
        <source>Filter by name (Ctrl+F)</source>
        <translation>Nach Namen filtern (Strg+F)</translation>
    </message>
    <message>
        <source>Filter projects by name</source>
        <translation>Projekte nach Namen filtern</translation>
    </message>
    <message>
        <source>Projects</source>
        <translation>Projekte</translation>
    </message>
    <message numerus="yes">
        <source>%n project(s)</source>
        <translation>
            <numerusform>%n Projekt</numerusform>
            <numerusform>%n Projekte</numerusform>
        </translation>
    </message>
    <message>
        <source>No project matches &quot;%1&quot;</source>
        <translation>Kein Projekt passt zu „%1“</translation>
    </message>
    <message>
        <source>No projects yet – drop a folder here</source>
        <translation>Noch keine Projekte – legen Sie hier einen Ordner ab</translation>
    </message>
    <message>
        <source>A project folder holds the database, the description, pictures and videos of an inspection.</source>
        <translation>Ein Projektordner enthält Datenbank, Beschreibung, Bilder und Videos einer Inspektion.</translation>
    </message>
    <message>
        <source>Loading projects…</source>
        <translation>Projekte werden geladen…</translation>
    </message>
</context>
<context>
    <name>Korvo::Desktop::QuickviewPage</name>
    <message>
        <source>Element</source>
        <translation>Element</translation>
    </message>
    <message>
        <source>Value</source>
        <translation>Wert</translation>
    </message>
    <message>
        <source>Asking the platform…</source>
        <translation>Die Plattform wird gefragt…</translation>
    </message>
    <message>
        <source>The data cannot be shown</source>
        <translation>Die Daten lassen sich nicht anzeigen</translation>
    </message>
    <message>
        <source>The platform&apos;s answer is not well-formed.</source>
        <translation>Die Antwort der Plattform ist nicht wohlgeformt.</translation>
    </message>
    <message>
        <source>The project has no data of this kind</source>
        <translation>Das Projekt hat keine Daten dieser Art</translation>
    </message>
</context>
<context>
    <name>Korvo::Desktop::QuickviewView</name>
    <message>
        <source>&amp;Save as…</source>
        <translation>&amp;Speichern unter…</translation>
    </message>
    <message>
        <source>&amp;Project</source>
        <translation>&amp;Projekt</translation>
    </message>
    <message>
        <source>S&amp;urveys</source>
        <translation>&amp;Untersuchungen</translation>
    </message>
    <message>
        <source>&amp;Manholes</source>
        <translation>S&amp;chächte</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>&amp;Schließen</translation>
    </message>
    <message>
        <source>Quickview data of %1</source>
        <translation>Quickview-Daten von %1</translation>
    </message>
    <message>
        <source>Not saved</source>
        <translation>Nicht gespeichert</translation>
    </message>
</context>
<context>
    <name>Korvo::Desktop::TransferDelegate</name>
    <message>
        <source>%1 %</source>
        <translation>%1 %</translation>
    </message>
</context>
<context>
    <name>Korvo::Desktop::TransferModel</name>
    <message>
        <source>%1, %2 %</source>
        <translation>%1, %2 %</translation>
    </message>
    <message numerus="yes">
        <source>%1 of %n file(s)</source>
        <translation>
            <numerusform>%1 von %n Datei</numerusform>
            <numerusform>%1 von %n Dateien</numerusform>
        </translation>
    </message>
    <message>
        <source>Starting…</source>
        <translation>Beginnt…</translation>
    </message>
    <message>
        <source>On its way…</source>
        <translation>Unterwegs…</translation>
    </message>
    <message>
        <source>%1 %</source>
        <translation>%1 %</translation>
    </message>
    <message>
        <source>paused</source>
        <translation>angehalten</translation>
    </message>
    <message>
        <source>last files, %1 %</source>
        <translation>letzte Dateien, %1 %</translation>
    </message>
    <message>
        <source>waiting for the platform&apos;s confirmation…</source>
        <translation>wartet auf die Bestätigung der Plattform…</translation>
    </message>
    <message>
        <source>Aborting…</source>
        <translation>Wird abgebrochen…</translation>
    </message>
    <message>
        <source>not complete, try again</source>
        <translation>unvollständig, bitte wiederholen</translation>
    </message>
    <message>
        <source>Failed: %1</source>
        <translation>Fehlgeschlagen: %1</translation>
    </message>
    <message>
        <source>Aborted</source>
        <translation>Abgebrochen</translation>
    </message>
    <message>
        <source>Aborted. %1</source>
        <translation>Abgebrochen. %1</translation>
    </message>
    <message>
        <source>Uploaded</source>
        <translation>Hochgeladen</translation>
    </message>
    <message>
        <source>Downloaded</source>
        <translation>Heruntergeladen</translation>
    </message>
    <message numerus="yes">
        <source>%n file(s)</source>
        <translation>
            <numerusform>%n Datei</numerusform>
            <numerusform>%n Dateien</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>Korvo::Desktop::TransferPage</name>
    <message>
        <source>&amp;Abort</source>
        <translation>Ab&amp;brechen</translation>
    </message>
    <message>
        <source>&amp;Try again</source>
        <translation>&amp;Wiederholen</translation>
    </message>
    <message>
        <source>&amp;Open folder</source>
        <translation>&amp;Ordner öffnen</translation>
    </message>
    <message>
        <source>&amp;Clear finished</source>
        <translation>&amp;Fertige entfernen</translation>
    </message>
    <message>
        <source>Nothing is on its way</source>
        <translation>Nichts ist unterwegs</translation>
    </message>
    <message>
        <source>Drop a project folder on this window to upload it, or select a project to download it.</source>
        <translation>Legen Sie einen Projektordner auf diesem Fenster ab, um ihn hochzuladen, oder wählen Sie ein Projekt zum Herunterladen.</translation>
    </message>
    <message>
        <source>Transfers</source>
        <translation>Übertragungen</translation>
    </message>
    <message>
        <source>&amp;Resume</source>
        <translation>For&amp;tsetzen</translation>
    </message>
    <message>
        <source>&amp;Pause</source>
        <translation>&amp;Anhalten</translation>
    </message>
    <message>
        <source>Abort the upload?</source>
        <translation>Upload abbrechen?</translation>
    </message>
    <message>
        <source>Abort the download?</source>
        <translation>Download abbrechen?</translation>
    </message>
    <message>
        <source>Abort the upload of &quot;%1&quot;?</source>
        <translation>Den Upload von „%1“ abbrechen?</translation>
    </message>
    <message>
        <source>Abort the download of &quot;%1&quot;?</source>
        <translation>Den Download von „%1“ abbrechen?</translation>
    </message>
    <message>
        <source>&amp;Abort and remove folder</source>
        <translation>Ab&amp;brechen und Ordner entfernen</translation>
    </message>
    <message>
        <source>&amp;Continue</source>
        <translation>&amp;Weitermachen</translation>
    </message>
    <message>
        <source>The download folder is removed with everything in it, files that were there before included:
%1

To keep what has arrived, pause the download instead.</source>
        <translation>Der Download-Ordner wird mit allem darin entfernt, auch mit Dateien, die vorher da waren:
%1

Um zu behalten, was angekommen ist, halten Sie den Download stattdessen an.</translation>
    </message>
    <message>
        <source>The file is removed:
%1</source>
        <translation>Die Datei wird entfernt:
%1</translation>
    </message>
    <message>
        <source>The platform is told that the upload is cancelled. The local folder stays as it is.</source>
        <translation>Der Plattform wird mitgeteilt, dass der Upload abgebrochen ist. Der lokale Ordner bleibt, wie er ist.</translation>
    </message>
</context>
<context>
    <name>Korvo::Desktop::Transfers</name>
    <message numerus="yes">
        <source>One of %n download(s)</source>
        <translation>
            <numerusform>Einer von %n Download</numerusform>
            <numerusform>Einer von %n Downloads</numerusform>
        </translation>
    </message>
    <message>
        <source>the platform has not confirmed it</source>
        <translation>von der Plattform nicht bestätigt</translation>
    </message>
    <message>
        <source>The platform has been told.</source>
        <translation>Die Plattform weiß davon.</translation>
    </message>
    <message>
        <source>The download folder has been removed.</source>
        <translation>Der Download-Ordner wurde entfernt.</translation>
    </message>
    <message>
        <source>The download folder could not be removed.</source>
        <translation>Der Download-Ordner ließ sich nicht entfernen.</translation>
    </message>
</context>
<context>
    <name>Korvo::Desktop::UploadDialog</name>
    <message>
        <source>Looking at the files…</source>
        <translation>Dateien werden durchgesehen…</translation>
    </message>
    <message>
        <source>&amp;Upload</source>
        <translation>&amp;Hochladen</translation>
    </message>
    <message>
        <source>Upload a project</source>
        <translation>Projekt hochladen</translation>
    </message>
    <message>
        <source>Folder:</source>
        <translation>Ordner:</translation>
    </message>
    <message>
        <source>Content:</source>
        <translation>Inhalt:</translation>
    </message>
    <message>
        <source>Upload &amp;as:</source>
        <translation>Hochladen &amp;als:</translation>
    </message>
    <message>
        <source>Project &amp;name:</source>
        <translation>Projekt&amp;name:</translation>
    </message>
    <message>
        <source>&amp;Created:</source>
        <translation>&amp;Erstellt:</translation>
    </message>
    <message>
        <source>&amp;Files at once:</source>
        <translation>&amp;Gleichzeitige Dateien:</translation>
    </message>
    <message>
        <source>A new project</source>
        <translation>Neues Projekt</translation>
    </message>
    <message>
        <source>Update of &quot;%1&quot;</source>
        <translation>Aktualisierung von „%1“</translation>
    </message>
    <message numerus="yes">
        <source>%n file(s), %1</source>
        <translation>
            <numerusform>%n Datei, %1</numerusform>
            <numerusform>%n Dateien, %1</numerusform>
        </translation>
    </message>
    <message>
        <source>The folder holds no file to upload.</source>
        <translation>Der Ordner enthält keine Datei zum Hochladen.</translation>
    </message>
    <message numerus="yes">
        <source>%n file(s) cannot be read; the upload would fail.</source>
        <translation>
            <numerusform>%n Datei ist nicht lesbar; der Upload würde scheitern.</numerusform>
            <numerusform>%n Dateien sind nicht lesbar; der Upload würde scheitern.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n picture(s) or video(s) have the name of another one: on the platform one replaces the other.</source>
        <translation>
            <numerusform>%n Bild oder Video heißt wie ein anderes: Auf der Plattform ersetzt eines das andere.</numerusform>
            <numerusform>%n Bilder oder Videos heißen wie andere: Auf der Plattform ersetzt eines das andere.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n empty file(s) will not be downloaded again.</source>
        <translation>
            <numerusform>%n leere Datei kommt bei einem Download nicht zurück.</numerusform>
            <numerusform>%n leere Dateien kommen bei einem Download nicht zurück.</numerusform>
        </translation>
    </message>
    <message>
        <source>Standard project</source>
        <translation>Standardprojekt</translation>
    </message>
    <message>
        <source>Project of the import tool</source>
        <translation>Projekt des Importwerkzeugs</translation>
    </message>
    <message>
        <source>Quickview project</source>
        <translation>Quickview-Projekt</translation>
    </message>
    <message>
        <source>&amp;Kind:</source>
        <translation>A&amp;rt:</translation>
    </message>
    <message>
        <source>&amp;Media of manholes:</source>
        <translation>&amp;Medien von Schächten:</translation>
    </message>
    <message>
        <source>None…</source>
        <translation>Keine…</translation>
    </message>
    <message numerus="yes">
        <source>%n file(s)…</source>
        <translation>
            <numerusform>%n Datei…</numerusform>
            <numerusform>%n Dateien…</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>NetworkTexts</name>
    <message>
        <source>The authority file %1 cannot be read: %2</source>
        <translation>Die Zertifikatsdatei %1 ist nicht lesbar: %2</translation>
    </message>
    <message>
        <source>The authority file %1 holds no certificate in PEM form.</source>
        <translation>Die Zertifikatsdatei %1 enthält kein Zertifikat im PEM-Format.</translation>
    </message>
    <message>
        <source>A proxy needs a host and a port.</source>
        <translation>Ein Proxy braucht einen Rechner und einen Port.</translation>
    </message>
</context>
</TS>
