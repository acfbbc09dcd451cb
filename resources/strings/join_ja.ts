<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ja">
<context>
    <name></name>
    <message id="JOIN"><source></source><translation>参加</translation></message>
    <message id="CANCEL"><source></source><translation>キャンセル</translation></message>
    <message id="SESSION_KEY"><source></source><translation>セッションキー</translation></message>
    <message id="ENTER_KEY"><source></source><translation>セッションキーを入力してください</translation></message>
    <message id="EMAIL_ADDRESS"><source></source><translation>メールアドレス</translation></message>
    <message id="ENTER_EMAIL"><source></source><translation>メールアドレスを入力してください</translation></message>
    <message id="ENTER_VALID_KEY"><source></source><translation>キーと接続を確認してください</translation></message>
    <message id="JOIN_PROGRESS"><source></source><translation>セッションに接続しています…</translation></message>
    <message id="INSTALL_PROGRESS"><source></source><translation>セッションの準備をしています。数分かかることがあります…</translation></message>
    <message id="DOWNLOADED"><source></source><translation>%2 MB 中 %1 MB</translation></message>
    <message id="PROBLEM_OCCURED"><source></source><translation>セッションに参加できませんでした。インターネット接続を確認してから、もう一度リンクを開いてください。</translation></message>
    <message id="LINK_NOT_ALLOWED"><source></source><translation>このコンピューターの管理者は、このリンクを許可していません。このウィンドウを閉じてください。</translation></message>
    <message id="OK"><source></source><translation>OK</translation></message>
    <message id="ERROR_MESSAGE"><source></source><translation>このコンピューターのオペレーティングシステムは古いため、セッションを利用できません。システム要件をご確認ください。</translation></message>
    <message id="CLICK_HERE"><source></source><translation>システム要件</translation></message>
</context>
</TS>
