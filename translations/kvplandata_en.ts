<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="zh_CN">
<context>
    <name>KvPlanSetting</name>
    <message>
        <source>未开始</source>
        <translation>Not started</translation>
    </message>
    <message>
        <source>未开始(延期)</source>
        <translation>Not started (delayed)</translation>
    </message>
    <message>
        <source>执行中</source>
        <translation>In progress</translation>
    </message>
    <message>
        <source>执行中(延期)</source>
        <translation>In progress (delayed)</translation>
    </message>
    <message>
        <source>已完成</source>
        <translation>Finished</translation>
    </message>
    <message>
        <source>已完成(提前)</source>
        <translation>Finished (ahead of time)</translation>
    </message>
    <message>
        <source>已完成(延期)</source>
        <translation>Finished (late)</translation>
    </message>
    <message>
        <source>从前到后</source>
        <translation>Front to back</translation>
    </message>
    <message>
        <source>从后到前</source>
        <translation>Back to front</translation>
    </message>
    <message>
        <source>从左到右</source>
        <translation>Left to right</translation>
    </message>
    <message>
        <source>从右到左</source>
        <translation>Right to left</translation>
    </message>
    <message>
        <source>从上到下</source>
        <translation>Top to bottom</translation>
    </message>
    <message>
        <source>从下到上</source>
        <translation>Bottom to top</translation>
    </message>
    <message>
        <source>从无到有</source>
        <translation>Appear</translation>
    </message>
    <message>
        <source>从有到无</source>
        <translation>Disappear</translation>
    </message>
</context>
</TS>
