<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en">
<context>
    <name></name>
    <message id="JOIN"><source></source><translation>Join</translation></message>
    <message id="CANCEL"><source></source><translation>Cancel</translation></message>
    <message id="ENTER_KEY"><source></source><translation>Enter your session key</translation></message>
    <message id="ENTER_EMAIL"><source></source><translation>Enter your e-mail address</translation></message>
    <message id="ENTER_VALID_KEY"><source></source><translation>Please enter a valid session key</translation></message>
    <message id="JOIN_PROGRESS"><source></source><translation>Connecting you to your session…</translation></message>
    <message id="PROBLEM_OCCURED"><source></source><translation>A problem occurred, and the session could not be joined. Please close this window and try again.</translation></message>
    <message id="LINK_NOT_ALLOWED"><source></source><translation>The administrator of this computer does not allow this link. Please close this window.</translation></message>
    <message id="OK"><source></source><translation>OK</translation></message>
    <message id="ERROR_MESSAGE"><source></source><translation>This computer’s operating system does not meet the requirements for the session. Click here to see the system requirements.</translation></message>
    <message id="CLICK_HERE"><source></source><translation>Click here</translation></message>
</context>
</TS>
