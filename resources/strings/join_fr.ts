<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="fr">
<context>
    <name></name>
    <message id="JOIN"><source></source><translation>Rejoindre</translation></message>
    <message id="CANCEL"><source></source><translation>Annuler</translation></message>
    <message id="SESSION_KEY"><source></source><translation>Clé de session</translation></message>
    <message id="ENTER_KEY"><source></source><translation>Saisissez votre clé de session</translation></message>
    <message id="EMAIL_ADDRESS"><source></source><translation>Adresse e-mail</translation></message>
    <message id="ENTER_EMAIL"><source></source><translation>Saisissez votre adresse e-mail</translation></message>
    <message id="ENTER_VALID_KEY"><source></source><translation>Vérifiez la clé et votre connexion</translation></message>
    <message id="JOIN_PROGRESS"><source></source><translation>Connexion à votre session en cours…</translation></message>
    <message id="INSTALL_PROGRESS"><source></source><translation>Préparation de votre session. Cela peut prendre quelques minutes…</translation></message>
    <message id="DOWNLOADED"><source></source><translation>%1 sur %2 Mo</translation></message>
    <message id="PROBLEM_OCCURED"><source></source><translation>Impossible de rejoindre la session. Vérifiez votre connexion Internet, puis ouvrez de nouveau le lien.</translation></message>
    <message id="LINK_NOT_ALLOWED"><source></source><translation>L’administrateur de cet ordinateur n’autorise pas ce lien. Veuillez fermer cette fenêtre.</translation></message>
    <message id="OK"><source></source><translation>OK</translation></message>
    <message id="ERROR_MESSAGE"><source></source><translation>Le système d’exploitation de cet ordinateur est trop ancien pour la session. Consultez la configuration requise.</translation></message>
    <message id="CLICK_HERE"><source></source><translation>configuration requise</translation></message>
</context>
</TS>
