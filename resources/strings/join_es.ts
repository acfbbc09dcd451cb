<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="es">
<context>
    <name></name>
    <message id="JOIN"><source></source><translation>Unirse</translation></message>
    <message id="CANCEL"><source></source><translation>Cancelar</translation></message>
    <message id="ENTER_KEY"><source></source><translation>Introduzca su clave de sesión</translation></message>
    <message id="ENTER_EMAIL"><source></source><translation>Introduzca su correo electrónico</translation></message>
    <message id="ENTER_VALID_KEY"><source></source><translation>Introduzca una clave válida</translation></message>
    <message id="JOIN_PROGRESS"><source></source><translation>Conectando con su sesión…</translation></message>
    <message id="PROBLEM_OCCURED"><source></source><translation>Se ha producido un problema y no ha sido posible unirse a la sesión. Cierre esta ventana e inténtelo de nuevo.</translation></message>
    <message id="LINK_NOT_ALLOWED"><source></source><translation>El administrador de este equipo no permite este enlace. Cierre esta ventana.</translation></message>
    <message id="OK"><source></source><translation>Aceptar</translation></message>
    <message id="ERROR_MESSAGE"><source></source><translation>El sistema operativo de este equipo no cumple los requisitos de la sesión. Haga clic aquí para consultar los requisitos del sistema.</translation></message>
    <message id="CLICK_HERE"><source></source><translation>Haga clic aquí</translation></message>
</context>
</TS>
