<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="en">
<context>
    <name>Korvo::Desktop::DropOverlay</name>
    <message numerus="yes">
        <source>Drop to upload %n folder(s)</source>
        <translation>
            <numerusform>Drop to upload %n folder</numerusform>
            <numerusform>Drop to upload %n folders</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>Korvo::Desktop::MainWindow</name>
    <message numerus="yes">
        <source>%1 of %n file(s) have arrived. Try it again: these are kept.</source>
        <translation>
            <numerusform>%1 of %n file has arrived. Try it again: it is kept.</numerusform>
            <numerusform>%1 of %n files have arrived. Try it again: these are kept.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>Korvo::Desktop::MediaView</name>
    <message numerus="yes">
        <source>%n file(s)</source>
        <translation>
            <numerusform>%n file</numerusform>
            <numerusform>%n files</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>Korvo::Desktop::ProjectsPage</name>
    <message numerus="yes">
        <source>%n project(s)</source>
        <translation>
            <numerusform>%n project</numerusform>
            <numerusform>%n projects</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>Korvo::Desktop::TransferModel</name>
    <message numerus="yes">
        <source>%1 of %n file(s)</source>
        <translation>
            <numerusform>%1 of %n file</numerusform>
            <numerusform>%1 of %n files</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n file(s)</source>
        <translation>
            <numerusform>%n file</numerusform>
            <numerusform>%n files</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>Korvo::Desktop::Transfers</name>
    <message numerus="yes">
        <source>One of %n download(s)</source>
        <translation>
            <numerusform>The download</numerusform>
            <numerusform>One of %n downloads</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>Korvo::Desktop::UploadDialog</name>
    <message numerus="yes">
        <source>%n file(s), %1</source>
        <translation>
            <numerusform>%n file, %1</numerusform>
            <numerusform>%n files, %1</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n file(s) cannot be read; the upload would fail.</source>
        <translation>
            <numerusform>%n file cannot be read; the upload would fail.</numerusform>
            <numerusform>%n files cannot be read; the upload would fail.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n picture(s) or video(s) have the name of another one: on the platform one replaces the other.</source>
        <translation>
            <numerusform>%n picture or video has the name of another one: on the platform one replaces the other.</numerusform>
            <numerusform>%n pictures or videos have the names of others: on the platform one replaces the other.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n empty file(s) will not be downloaded again.</source>
        <translation>
            <numerusform>%n empty file will not be downloaded again.</numerusform>
            <numerusform>%n empty files will not be downloaded again.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n file(s)…</source>
        <translation>
            <numerusform>%n file…</numerusform>
            <numerusform>%n files…</numerusform>
        </translation>
    </message>
</context>
</TS>
