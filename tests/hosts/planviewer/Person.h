#pragma once

#include "Answers.h"

#include <ColumnLayout.h>
#include <MainWindow.h>
#include <PlanClient.h>
#include <PlanListPanel.h>
#include <PlanPage.h>
#include <ServiceProcess.h>
#include <TaskColumns.h>
#include <TaskModel.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtNetwork/QNetworkAccessManager>
#include <QtNetwork/QNetworkReply>
#include <QtTest/QtTest>
#include <QtWidgets/QAction>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QSpinBox>
#include <QtWidgets/QTableView>
#include <QtWidgets/QTreeView>

/// The window and what a person does with it: keys, clicks, answers to dialogs.
struct Person : Answers
{
    PlanClient client;
    MainWindow window{&client};
    QStringList failures;

    Person()
    {
        client.setAskAgain([this](const PlanFailure& failure) {
            failures.append(failure.text + QLatin1Char('\n') + failure.details);
            return false;
        });
        window.show();
        window.activateWindow();
        window.start();
    }

    PlanPage& page() { return *window.planPage(); }
    TaskModel& model() { return *page().model(); }
    QAction* action(const char* name) { return window.findChild<QAction*>(QString::fromLatin1(name)); }

    /// Opens the plan in a row of the list by the keyboard.
    void open(int row)
    {
        QTableView* const list = window.planList()->view();
        list->setCurrentIndex(list->model()->index(row, 0));
        list->setFocus();
        QTest::keyClick(list, Qt::Key_Return);
    }

    /// Edits a cell as a person does: F2, text, Return.
    void type(int position, int column, const QString& text)
    {
        QTreeView* const tree = page().tree();
        tree->setCurrentIndex(model().indexOf(position, column));
        tree->setFocus();
        QTest::keyClick(tree, Qt::Key_F2);
        QWidget* editor = tree->viewport()->findChild<QSpinBox*>();
        if (editor)
            static_cast<QSpinBox*>(editor)->selectAll();
        else if ((editor = tree->viewport()->findChild<QLineEdit*>()))
            static_cast<QLineEdit*>(editor)->selectAll();
        if (!editor)
            return;
        QTest::keyClicks(editor, text);
        QTest::keyClick(editor, Qt::Key_Return);
        QTRY_VERIFY(!tree->viewport()->findChild<QSpinBox*>() && !tree->viewport()->findChild<QLineEdit*>());
    }

    int positionOf(const QString& name)
    {
        for (int i = 0; i < model().tasks().size(); ++i) {
            if (model().tasks().at(i).node.name == name)
                return i;
        }
        return -1;
    }
};

/// What the service holds, asked without the library.
inline QJsonDocument held(const KvTest::ServiceProcess& service, const QString& path)
{
    QNetworkAccessManager manager;
    QNetworkReply* const reply = manager.get(QNetworkRequest(QUrl(service.baseUrl() + path)));
    QSignalSpy finished(reply, &QNetworkReply::finished);
    if (!reply->isFinished())
        finished.wait(10000);
    return QJsonDocument::fromJson(reply->readAll());
}

inline QJsonObject heldTask(const KvTest::ServiceProcess& service, const QString& planId, const QString& name)
{
    const QJsonArray tasks = held(service, QStringLiteral("task-service/plans/") + planId)
                                 .object()
                                 .value(QLatin1String("tasks"))
                                 .toArray();
    for (const QJsonValue& task : tasks) {
        if (task.toObject().value(QLatin1String("name")).toString() == name)
            return task.toObject();
    }
    return {};
}
