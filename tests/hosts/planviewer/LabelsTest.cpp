// What a person reads and what a screen reader says, in Chinese: nothing stays in English, nothing has no
// name.

#include <Appearance.h>
#include <ImportCheck.h>
#include <MainWindow.h>
#include <PlanClient.h>
#include <PlanFailure.h>
#include <PlanPage.h>
#include <ReportDialog.h>
#include <SaveDialog.h>
#include <TaskModel.h>

#include <KvSoftBase/KvSoftBase.h>

#include <QtCore/QBuffer>
#include <QtGui/QAccessible>
#include <QtTest/QtTest>
#include <QtWidgets/QAbstractButton>
#include <QtWidgets/QAbstractItemView>
#include <QtWidgets/QAbstractSpinBox>
#include <QtWidgets/QAction>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMenu>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QTabWidget>
#include <QtWidgets/QTextEdit>

namespace {

bool isForeign(QString text)
{
    // Names that are the same in every language, and colours.
    text.remove(QRegularExpression(QStringLiteral("^#[0-9a-f]{8}$")));
    for (const char* const name : {"English", "JSON", "PNG", "SVG", "PDF", "KV_BASE_API", "KV_ACCESS_TOKEN"})
        text.remove(QLatin1String(name));
    return text.contains(QRegularExpression(QStringLiteral("[A-Za-z]{3}")));
}

// Every text that the widgets below @p root show or say.
QStringList textsOf(const QWidget& root)
{
    QStringList texts{root.windowTitle()};
    for (const QWidget* const widget : root.findChildren<QWidget*>()) {
        texts += {widget->windowTitle(), widget->toolTip(), widget->statusTip(), widget->accessibleName(),
                  widget->accessibleDescription()};
        if (const auto* const label = qobject_cast<const QLabel*>(widget))
            texts.append(label->text());
        if (const auto* const button = qobject_cast<const QAbstractButton*>(widget))
            texts.append(button->text());
        if (const auto* const edit = qobject_cast<const QLineEdit*>(widget))
            texts.append(edit->placeholderText());
        if (const auto* const edit = qobject_cast<const QTextEdit*>(widget))
            texts.append(edit->toPlainText());
        if (const auto* const menu = qobject_cast<const QMenu*>(widget))
            texts.append(menu->title());
        if (const auto* const box = qobject_cast<const QComboBox*>(widget)) {
            for (int i = 0; i < box->count(); ++i)
                texts.append(box->itemText(i));
        }
        if (const auto* const tabs = qobject_cast<const QTabWidget*>(widget)) {
            for (int i = 0; i < tabs->count(); ++i)
                texts.append(tabs->tabText(i));
        }
        if (const auto* const header = qobject_cast<const QHeaderView*>(widget)) {
            for (int i = 0; header->orientation() == Qt::Horizontal && i < header->count(); ++i)
                texts.append(header->model()->headerData(i, Qt::Horizontal).toString());
        }
    }
    for (const QAction* const action : root.findChildren<QAction*>())
        texts += {action->text(), action->toolTip(), action->statusTip(), action->iconText()};
    texts.removeAll(QString());
    return texts;
}

// Widgets that take input, and that Qt does not keep inside others.
bool isForInput(const QWidget* widget)
{
    const bool isInput = qobject_cast<const QAbstractButton*>(widget) ||
                         qobject_cast<const QLineEdit*>(widget) || qobject_cast<const QComboBox*>(widget) ||
                         qobject_cast<const QAbstractSpinBox*>(widget) ||
                         (qobject_cast<const QAbstractScrollArea*>(widget) &&
                          widget->focusPolicy() != Qt::NoFocus && !qobject_cast<const QHeaderView*>(widget));
    if (!isInput || widget->objectName().startsWith(QLatin1String("qt_")))
        return false;
    for (const QWidget* above = widget->parentWidget(); above; above = above->parentWidget()) {
        if (qobject_cast<const QLineEdit*>(above) || qobject_cast<const QAbstractSpinBox*>(above) ||
            qobject_cast<const QComboBox*>(above) || qobject_cast<const QTabBar*>(above) ||
            qobject_cast<const QAbstractItemView*>(above))
            return false;
    }
    return true;
}

QStringList namelessIn(const QWidget& root)
{
    QStringList nameless;
    int inputs = 0;
    for (QWidget* const widget : root.findChildren<QWidget*>()) {
        if (!isForInput(widget))
            continue;
        ++inputs;
        const QAccessibleInterface* const spoken = QAccessible::queryAccessibleInterface(widget);
        if (!spoken || spoken->text(QAccessible::Name).trimmed().isEmpty())
            nameless.append(QString::fromLatin1(widget->metaObject()->className()) + QLatin1Char(' ') +
                            widget->objectName());
    }
    return inputs > 0 ? nameless : QStringList(QStringLiteral("nothing takes input"));
}

} // namespace

class LabelsTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_settings;
    std::unique_ptr<PlanClient> m_client;
    std::unique_ptr<MainWindow> m_window;
    std::unique_ptr<QDialog> m_save;
    std::unique_ptr<QDialog> m_report;

private Q_SLOTS:
    void initTestCase()
    {
        SetSettingsDirectory(m_settings.path());
        Appearance::applyLanguage(QStringLiteral("zh"));
        m_client = std::make_unique<PlanClient>();
        m_window = std::make_unique<MainWindow>(m_client.get());
        SaveList list;
        list.toCreate.append(KvPlanNode());
        list.toUpdate.append(KvPlanNode());
        list.toUpdate.last().finishedPercentage = 40;
        m_save = std::make_unique<SaveDialog>(list, QList<KvPlanNode>{KvPlanNode()}, nullptr);
        m_report = std::make_unique<ReportDialog>(KvPlanNode());
    }

    void cleanupTestCase() { m_window.reset(); }

    void nothingIsLeftInEnglish()
    {
        QStringList texts = textsOf(*m_window) + textsOf(*m_save) + textsOf(*m_report);
        QVERIFY(texts.size() > 100);
        QVERIFY(texts.contains(QStringLiteral("甘特图"))); // the catalogue was found
        QStringList foreign;
        for (const QString& text : qAsConst(texts)) {
            if (isForeign(text))
                foreign.append(text);
        }
        QVERIFY2(foreign.isEmpty(), qPrintable(foreign.join(QLatin1Char('|'))));
    }

    void failuresAreToldInTheUsersLanguage()
    {
        for (int category = KvNetworkReport::Timeout; category <= KvNetworkReport::Aborted; ++category) {
            for (const int status : {400, 401, 403, 404, 500, 503}) {
                KvNetworkReport report;
                report.category = KvNetworkReport::Category(category);
                report.httpStatus = status;
                report.message = QStringLiteral("the service answered");
                const PlanFailure failure = planFailure(QStringLiteral("读取"), true, &report);
                QVERIFY2(!isForeign(failure.text), qPrintable(failure.text));
                QVERIFY(failure.details.contains(report.message)); // as it came, and apart
            }
        }
        QVERIFY(!isForeign(planFailure(QStringLiteral("读取"), false, nullptr).text));
    }

    void faultsOfAScheduleAreToldInTheUsersLanguage()
    {
        QByteArray schedule(R"({"AllTasks": [1, {"UniqueID": 7, "ParentTask": 99, "Name": "一", "Start": "x"},
            {"UniqueID": 7, "Name": "二", "Predecessors": [{"SourceTaskUniqueID": 55}]},
            {"UniqueID": 3, "ParentTask": 4}, {"UniqueID": 4, "ParentTask": 3}]})");
        for (QByteArray content :
             {schedule, QByteArray("{}"), QByteArray("{\"AllPlanNodes\": []}"), QByteArray()}) {
            QBuffer file(&content);
            QVERIFY(file.open(QIODevice::ReadOnly));
            const QStringList problems = checkImport(file).problems;
            QVERIFY(!problems.isEmpty());
            for (QString problem : problems) {
                problem.remove(QRegularExpression(QStringLiteral("\"[^\"]*\""))); // names in the file
                QVERIFY2(!isForeign(problem), qPrintable(problem));
            }
        }
    }

    void qtsOwnButtonsAreTranslated()
    {
        QDialogButtonBox box(QDialogButtonBox::Cancel);
        const QString cancel = box.button(QDialogButtonBox::Cancel)->text();
        QVERIFY2(!isForeign(cancel), qPrintable(cancel + QStringLiteral(" (from qttranslations5-l10n)")));
    }

    void everythingThatTakesInputHasAName()
    {
        for (const QWidget* const root :
             {static_cast<const QWidget*>(m_window.get()), static_cast<const QWidget*>(m_save.get()),
              static_cast<const QWidget*>(m_report.get())}) {
            const QStringList nameless = namelessIn(*root);
            QVERIFY2(nameless.isEmpty(), qPrintable(nameless.join(QLatin1String(", "))));
        }
    }

    // Switched off without a word why is a riddle.
    void whatIsSwitchedOffTellsWhy()
    {
        int disabled = 0;
        for (const QAction* const action : m_window->findChildren<QAction*>()) {
            if (action->isEnabled() || action->menu() || action->objectName().isEmpty() ||
                action->objectName().startsWith(QLatin1Char('_')))
                continue; // those without a name are Qt's, as in a line to type in
            ++disabled;
            QVERIFY2(!action->toolTip().isEmpty() && action->toolTip() != action->iconText(),
                     qPrintable(action->objectName()));
        }
        QVERIFY(disabled > 8);
    }
};

QTEST_MAIN(LabelsTest)
#include "LabelsTest.moc"
