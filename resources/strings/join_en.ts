<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en">
<context>
    <name></name>
    <message id="JOIN"><source></source><translation>Join</translation></message>
    <message id="CANCEL"><source></source><translation>Cancel</translation></message>
    <message id="SESSION_KEY"><source></source><translation>Session key</translation></message>
    <message id="ENTER_KEY"><source></source><translation>Enter your session key</translation></message>
    <message id="EMAIL_ADDRESS"><source></source><translation>E-mail address</translation></message>
    <message id="ENTER_EMAIL"><source></source><translation>Enter your e-mail address</translation></message>
    <message id="ENTER_VALID_KEY"><source></source><translation>Please check the key and your connection</translation></message>
    <message id="JOIN_PROGRESS"><source></source><translation>Connecting you to your session…</translation></message>
    <message id="INSTALL_PROGRESS"><source></source><translation>Installing what your session needs. This can take a few minutes…</translation></message>
    <message id="DOWNLOADED"><source></source><translation>%1 of %2 MB</translation></message>
    <message id="PROBLEM_OCCURED"><source></source><translation>The session could not be joined. Please check your internet connection, then open the link again.</translation></message>
    <message id="LINK_NOT_ALLOWED"><source></source><translation>The administrator of this computer does not allow this link. Please close this window.</translation></message>
    <message id="OK"><source></source><translation>OK</translation></message>
    <message id="ERROR_MESSAGE"><source></source><translation>This computer’s operating system is too old for the session. Please see the system requirements.</translation></message>
    <message id="CLICK_HERE"><source></source><translation>system requirements</translation></message>
</context>
</TS>
