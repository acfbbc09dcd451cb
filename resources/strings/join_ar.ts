<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ar">
<context>
    <name></name>
    <message id="JOIN"><source></source><translation>انضمام</translation></message>
    <message id="CANCEL"><source></source><translation>إلغاء</translation></message>
    <message id="SESSION_KEY"><source></source><translation>مفتاح الجلسة</translation></message>
    <message id="ENTER_KEY"><source></source><translation>أدخل مفتاح الجلسة</translation></message>
    <message id="EMAIL_ADDRESS"><source></source><translation>البريد الإلكتروني</translation></message>
    <message id="ENTER_EMAIL"><source></source><translation>أدخل عنوان بريدك الإلكتروني</translation></message>
    <message id="ENTER_VALID_KEY"><source></source><translation>يرجى التحقق من المفتاح ومن الاتصال</translation></message>
    <message id="JOIN_PROGRESS"><source></source><translation>جارٍ الاتصال بجلستك…</translation></message>
    <message id="INSTALL_PROGRESS"><source></source><translation>جارٍ تجهيز جلستك. قد يستغرق ذلك بضع دقائق…</translation></message>
    <message id="DOWNLOADED"><source></source><translation>%1 من %2 ميغابايت</translation></message>
    <message id="PROBLEM_OCCURED"><source></source><translation>تعذر الانضمام إلى الجلسة. يرجى التحقق من اتصالك بالإنترنت ثم فتح الرابط مرة أخرى.</translation></message>
    <message id="LINK_NOT_ALLOWED"><source></source><translation>لا يسمح مسؤول هذا الكمبيوتر بهذا الرابط. يرجى إغلاق هذه النافذة.</translation></message>
    <message id="OK"><source></source><translation>موافق</translation></message>
    <message id="ERROR_MESSAGE"><source></source><translation>نظام التشغيل على هذا الكمبيوتر أقدم من أن تعمل عليه الجلسة. يرجى الاطلاع على متطلبات النظام.</translation></message>
    <message id="CLICK_HERE"><source></source><translation>متطلبات النظام</translation></message>
</context>
</TS>
