<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ar">
<context>
    <name></name>
    <message id="JOIN"><source></source><translation>انضمام</translation></message>
    <message id="CANCEL"><source></source><translation>إلغاء</translation></message>
    <message id="ENTER_KEY"><source></source><translation>أدخل مفتاح الجلسة</translation></message>
    <message id="ENTER_EMAIL"><source></source><translation>أدخل عنوان بريدك الإلكتروني</translation></message>
    <message id="ENTER_VALID_KEY"><source></source><translation>يرجى إدخال مفتاح صالح</translation></message>
    <message id="JOIN_PROGRESS"><source></source><translation>يتم الآن الاتصال بجلستك…</translation></message>
    <message id="PROBLEM_OCCURED"><source></source><translation>حدثت مشكلة وتعذر الانضمام إلى الجلسة. يرجى إغلاق هذه النافذة والمحاولة مرة أخرى.</translation></message>
    <message id="LINK_NOT_ALLOWED"><source></source><translation>لا يسمح مسؤول هذا الكمبيوتر بهذا الرابط. يرجى إغلاق هذه النافذة.</translation></message>
    <message id="OK"><source></source><translation>موافق</translation></message>
    <message id="ERROR_MESSAGE"><source></source><translation>لا يستوفي نظام تشغيل هذا الكمبيوتر متطلبات الجلسة. انقر هنا للاطلاع على متطلبات النظام.</translation></message>
    <message id="CLICK_HERE"><source></source><translation>انقر هنا</translation></message>
</context>
</TS>
