<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de">
<context>
    <name></name>
    <message id="JOIN"><source></source><translation>Beitreten</translation></message>
    <message id="CANCEL"><source></source><translation>Abbrechen</translation></message>
    <message id="SESSION_KEY"><source></source><translation>Sitzungsschlüssel</translation></message>
    <message id="ENTER_KEY"><source></source><translation>Sitzungsschlüssel eingeben</translation></message>
    <message id="EMAIL_ADDRESS"><source></source><translation>E-Mail-Adresse</translation></message>
    <message id="ENTER_EMAIL"><source></source><translation>E-Mail-Adresse eingeben</translation></message>
    <message id="ENTER_VALID_KEY"><source></source><translation>Bitte Schlüssel und Verbindung prüfen</translation></message>
    <message id="JOIN_PROGRESS"><source></source><translation>Die Verbindung zu Ihrer Sitzung wird hergestellt …</translation></message>
    <message id="INSTALL_PROGRESS"><source></source><translation>Die Sitzung wird eingerichtet. Das kann einige Minuten dauern …</translation></message>
    <message id="DOWNLOADED"><source></source><translation>%1 von %2 MB</translation></message>
    <message id="PROBLEM_OCCURED"><source></source><translation>Sie konnten der Sitzung nicht beitreten. Bitte prüfen Sie Ihre Internetverbindung und öffnen Sie den Link dann noch einmal.</translation></message>
    <message id="LINK_NOT_ALLOWED"><source></source><translation>Der Administrator dieses Computers lässt diesen Link nicht zu. Bitte schließen Sie dieses Fenster.</translation></message>
    <message id="OK"><source></source><translation>OK</translation></message>
    <message id="ERROR_MESSAGE"><source></source><translation>Das Betriebssystem dieses Computers ist für die Sitzung zu alt. Bitte beachten Sie die Systemanforderungen.</translation></message>
    <message id="CLICK_HERE"><source></source><translation>Systemanforderungen</translation></message>
</context>
</TS>
