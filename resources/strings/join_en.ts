<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en">
<context>
    <name></name>
    <message id="JOIN"><source></source><translation>Join</translation></message>
    <message id="JOIN_PROGRESS"><source></source><translation>Connecting you to your session…</translation></message>
    <message id="PROBLEM_OCCURED"><source></source><translation>A problem occurred, and the session could not be joined. Please close this window and try again.</translation></message>
</context>
</TS>
