<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ja">
<context>
    <name></name>
    <message id="JOIN"><source></source><translation>参加</translation></message>
    <message id="CANCEL"><source></source><translation>キャンセル</translation></message>
    <message id="ENTER_KEY"><source></source><translation>セッションキーを入力してください</translation></message>
    <message id="ENTER_EMAIL"><source></source><translation>メールアドレスを入力してください</translation></message>
    <message id="ENTER_VALID_KEY"><source></source><translation>有効なキーを入力してください</translation></message>
    <message id="JOIN_PROGRESS"><source></source><translation>セッションに接続しています…</translation></message>
    <message id="PROBLEM_OCCURED"><source></source><translation>問題が発生したため、セッションに参加できませんでした。このウィンドウを閉じて、もう一度お試しください。</translation></message>
    <message id="LINK_NOT_ALLOWED"><source></source><translation>このコンピューターの管理者は、このリンクを許可していません。このウィンドウを閉じてください。</translation></message>
    <message id="OK"><source></source><translation>OK</translation></message>
    <message id="ERROR_MESSAGE"><source></source><translation>このコンピューターのオペレーティングシステムは、セッションの要件を満たしていません。システム要件については、こちらをクリックしてご確認ください。</translation></message>
    <message id="CLICK_HERE"><source></source><translation>こちらをクリック</translation></message>
</context>
</TS>
