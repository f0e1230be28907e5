#pragma once

#include <QtCore/QTimer>
#include <QtTest/QtTest>
#include <QtWidgets/QApplication>

#include <functional>

/// What a person does with the dialogs that come up while an action runs.
struct Answers
{
    /// Answers the next dialog as soon as it is there.
    static void answer(const std::function<void(QWidget* dialog)>& act)
    {
        auto* const look = new QTimer(qApp);
        QObject::connect(look, &QTimer::timeout, look, [look, act] {
            QWidget* const dialog = QApplication::activeModalWidget();
            if (!dialog)
                return;
            look->deleteLater();
            look->stop();
            act(dialog);
        });
        look->start(10);
    }

    static void click(QWidget* dialog, const char* button)
    {
        auto* const found = dialog->findChild<QWidget*>(QString::fromLatin1(button));
        QVERIFY2(found, button);
        QTest::mouseClick(found, Qt::LeftButton);
    }
};
