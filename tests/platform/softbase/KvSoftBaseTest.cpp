#include <KvSoftBase/KvSoftBase.h>

#include <QtCore/QDir>
#include <QtCore/QProcess>
#include <QtCore/QStandardPaths>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <cstdio>
#include <cstring>

class KvSoftBaseTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void startsWithTheProjectOfTheEnvironment_data();
    void startsWithTheProjectOfTheEnvironment();
    void keepsTheProjectThatIsSet();
    void namesTheApplication();
    void usesThePlatformsFolder();
    void environmentOverridesThePlatformsFolder_data();
    void environmentOverridesThePlatformsFolder();
    void codeOverridesTheEnvironment();
    void keepsTheFolderWhenTheCurrentOneChanges();
#if defined(__GNUC__) && defined(__x86_64__)
    void directoryIsTheThirdVirtualOperation();
#endif
};

void KvSoftBaseTest::init()
{
    qunsetenv("KV_SETTINGS_DIR");
}

void KvSoftBaseTest::cleanup()
{
    SetSettingsDirectory(QString());
}

void KvSoftBaseTest::startsWithTheProjectOfTheEnvironment_data()
{
    QTest::addColumn<QString>("environment");
    QTest::newRow("set") << QString::fromUtf8("项目 7");
    QTest::newRow("empty") << QString();
}

// In a process of its own, since the environment is read but once.
void KvSoftBaseTest::startsWithTheProjectOfTheEnvironment()
{
    QFETCH(QString, environment);
    QProcess process;
    QProcessEnvironment variables = QProcessEnvironment::systemEnvironment();
    variables.insert(QStringLiteral("KV_PROJECT_ID"), environment);
    process.setProcessEnvironment(variables);
    process.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--print-project")});
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 0);
    QCOMPARE(QString::fromLocal8Bit(process.readAllStandardOutput()),
             QStringLiteral("<%1>").arg(environment));
}

void KvSoftBaseTest::keepsTheProjectThatIsSet()
{
    GetSoftCache()->setCurrentProjectId(QStringLiteral("p-1"));
    QCOMPARE(GetSoftCache()->currentProjectId(), QStringLiteral("p-1"));
    qputenv("KV_PROJECT_ID", "p-2");
    QCOMPARE(GetSoftCache()->currentProjectId(), QStringLiteral("p-1"));
    GetSoftCache()->setCurrentProjectId(QString());
    QCOMPARE(GetSoftCache()->currentProjectId(), QString());
}

void KvSoftBaseTest::namesTheApplication()
{
    QCoreApplication::setOrganizationName(QStringLiteral("an office"));
    QCoreApplication::setApplicationName(QStringLiteral("planner"));
    QCOMPARE(GetSettings()->organizationName(), QStringLiteral("an office"));
    QCOMPARE(GetSettings()->applicationName(), QStringLiteral("planner"));
}

void KvSoftBaseTest::usesThePlatformsFolder()
{
    QCoreApplication::setOrganizationName(QStringLiteral("an office"));
    QCoreApplication::setApplicationName(QStringLiteral("planner"));
    const QString directory = GetSettings()->settingsDirectory();
    QCOMPARE(directory, QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation));
    QVERIFY(QDir::isAbsolutePath(directory));
    QVERIFY(directory.endsWith(QLatin1String("/an office/planner")));
}

void KvSoftBaseTest::environmentOverridesThePlatformsFolder_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("directory");
    const QString root = QDir::rootPath();
    QTest::newRow("plain") << root + QStringLiteral("srv/kv") << root + QStringLiteral("srv/kv");
    QTest::newRow("slash at the end") << root + QStringLiteral("srv/kv//") << root + QStringLiteral("srv/kv");
    QTest::newRow("not tidy") << root + QStringLiteral("srv/x/../kv/./") << root + QStringLiteral("srv/kv");
    QTest::newRow("not ASCII") << root + QString::fromUtf8("srv/设置 1")
                               << root + QString::fromUtf8("srv/设置 1");
    QTest::newRow("relative") << QStringLiteral("kv")
                              << QDir::current().absoluteFilePath(QStringLiteral("kv"));
    QTest::newRow("root") << root << root.chopped(1);
}

void KvSoftBaseTest::environmentOverridesThePlatformsFolder()
{
    QFETCH(QString, value);
    qputenv("KV_SETTINGS_DIR", value.toLocal8Bit());
    QTEST(GetSettings()->settingsDirectory(), "directory");
    qunsetenv("KV_SETTINGS_DIR");
    SetSettingsDirectory(value);
    QTEST(GetSettings()->settingsDirectory(), "directory");
}

void KvSoftBaseTest::codeOverridesTheEnvironment()
{
    const QString root = QDir::rootPath();
    qputenv("KV_SETTINGS_DIR", QString(root + QStringLiteral("from-environment")).toLocal8Bit());
    SetSettingsDirectory(root + QStringLiteral("from-code"));
    QCOMPARE(GetSettings()->settingsDirectory(), root + QStringLiteral("from-code"));
    SetSettingsDirectory(QString());
    QCOMPARE(GetSettings()->settingsDirectory(), root + QStringLiteral("from-environment"));
}

void KvSoftBaseTest::keepsTheFolderWhenTheCurrentOneChanges()
{
    const QString before = QDir::currentPath();
    QTemporaryDir elsewhere;
    QVERIFY(elsewhere.isValid());
    SetSettingsDirectory(QStringLiteral("kv"));
    QVERIFY(QDir::setCurrent(elsewhere.path()));
    const QString directory = GetSettings()->settingsDirectory();
    QVERIFY(QDir::setCurrent(before));
    QCOMPARE(directory, QDir(before).absoluteFilePath(QStringLiteral("kv")));
}

#if defined(__GNUC__) && defined(__x86_64__)
void KvSoftBaseTest::directoryIsTheThirdVirtualOperation()
{
    // With this compiler a pointer to a virtual function holds its distance in the table, in bytes, plus one.
    const auto operation = &KvSoftSettings::settingsDirectory;
    qintptr raw = 0;
    std::memcpy(&raw, &operation, sizeof raw);
    QCOMPARE(raw, qintptr(1 + 2 * sizeof(void*)));
}
#endif

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    if (application.arguments().contains(QStringLiteral("--print-project"))) {
        std::printf("<%s>", GetSoftCache()->currentProjectId().toLocal8Bit().constData());
        return 0;
    }
    KvSoftBaseTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "KvSoftBaseTest.moc"
