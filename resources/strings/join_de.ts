<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de">
<context>
    <name></name>
    <message id="JOIN"><source></source><translation>Beitreten</translation></message>
    <message id="CANCEL"><source></source><translation>Abbrechen</translation></message>
    <message id="ENTER_KEY"><source></source><translation>Sitzungsschlüssel eingeben</translation></message>
    <message id="ENTER_EMAIL"><source></source><translation>E-Mail-Adresse eingeben</translation></message>
    <message id="ENTER_VALID_KEY"><source></source><translation>Bitte gültigen Schlüssel eingeben</translation></message>
    <message id="JOIN_PROGRESS"><source></source><translation>Die Verbindung zu Ihrer Sitzung wird hergestellt …</translation></message>
    <message id="PROBLEM_OCCURED"><source></source><translation>Es ist ein Problem aufgetreten, und Sie konnten der Sitzung nicht beitreten. Bitte schließen Sie dieses Fenster und versuchen Sie es erneut.</translation></message>
    <message id="LINK_NOT_ALLOWED"><source></source><translation>Der Administrator dieses Computers lässt diesen Link nicht zu. Bitte schließen Sie dieses Fenster.</translation></message>
    <message id="OK"><source></source><translation>OK</translation></message>
    <message id="ERROR_MESSAGE"><source></source><translation>Das Betriebssystem dieses Computers erfüllt die Anforderungen für die Sitzung nicht. Klicken Sie hier, um die Systemanforderungen anzuzeigen.</translation></message>
    <message id="CLICK_HERE"><source></source><translation>Klicken Sie hier</translation></message>
</context>
</TS>
