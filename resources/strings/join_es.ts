<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="es">
<context>
    <name></name>
    <message id="JOIN"><source></source><translation>Unirse</translation></message>
    <message id="CANCEL"><source></source><translation>Cancelar</translation></message>
    <message id="SESSION_KEY"><source></source><translation>Clave de sesión</translation></message>
    <message id="ENTER_KEY"><source></source><translation>Introduzca su clave de sesión</translation></message>
    <message id="EMAIL_ADDRESS"><source></source><translation>Correo electrónico</translation></message>
    <message id="ENTER_EMAIL"><source></source><translation>Introduzca su correo electrónico</translation></message>
    <message id="ENTER_VALID_KEY"><source></source><translation>Compruebe la clave y la conexión</translation></message>
    <message id="JOIN_PROGRESS"><source></source><translation>Conectando con su sesión…</translation></message>
    <message id="INSTALL_PROGRESS"><source></source><translation>Preparando la sesión. Esto puede tardar unos minutos…</translation></message>
    <message id="DOWNLOADED"><source></source><translation>%1 de %2 MB</translation></message>
    <message id="PROBLEM_OCCURED"><source></source><translation>No ha sido posible unirse a la sesión. Compruebe la conexión a Internet y vuelva a abrir el enlace.</translation></message>
    <message id="LINK_NOT_ALLOWED"><source></source><translation>El administrador de este equipo no permite este enlace. Cierre esta ventana.</translation></message>
    <message id="OK"><source></source><translation>Aceptar</translation></message>
    <message id="ERROR_MESSAGE"><source></source><translation>El sistema operativo de este equipo es demasiado antiguo para la sesión. Consulte los requisitos del sistema.</translation></message>
    <message id="CLICK_HERE"><source></source><translation>requisitos del sistema</translation></message>
</context>
</TS>
