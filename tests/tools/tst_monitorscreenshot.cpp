// algo-monitor end to end: replayed captures rendered to a PNG picture with no display
// and no platform chosen by the caller, and the exit status of an unreadable capture.

#include <QtTest>

#include <QImage>
#include <QProcess>
#include <QTemporaryDir>

class TestMonitorScreenshot : public QObject
{
    Q_OBJECT
private slots:
    void screenshot_data();
    void screenshot();
};

void TestMonitorScreenshot::screenshot_data()
{
    QTest::addColumn<QStringList>("captures");
    QTest::addColumn<int>("exitCode");
    const QString dir = QStringLiteral(EXAMPLES_DIR "/");
    QTest::newRow("one capture") << QStringList{dir + "twap-morning.jsonl"} << 0;
    QTest::newRow("every example") << QStringList{dir + "twap-morning.jsonl", dir + "t0-day.jsonl",
                                                  dir + "basis-trade.jsonl"} << 0;
    QTest::newRow("unreadable capture") << QStringList{dir + "missing.jsonl"} << 2;
}

void TestMonitorScreenshot::screenshot()
{
    QFETCH(QStringList, captures);
    QFETCH(int, exitCode);
    QTemporaryDir dir;
    const QString picture = dir.filePath("monitor.png");
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"})
        environment.remove(name); // the tool picks the offscreen platform itself
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(ALGO_MONITOR_PATH,
                  QStringList{"--speed", "0", "--screenshot", picture} + captures);
    QVERIFY(process.waitForFinished(120000));
    QCOMPARE(process.exitCode(), exitCode);
    const QImage image(picture);
    QCOMPARE(image.isNull(), exitCode != 0);
    if (image.isNull())
        return;
    QCOMPARE(image.size(), QSize(1280, 800));
    QSet<QRgb> colours; // tables, text and bars, not a blank window
    for (int y = 0; y < image.height(); y += 3) {
        for (int x = 0; x < image.width(); x += 3)
            colours.insert(image.pixel(x, y));
    }
    QVERIFY2(colours.size() > 50, qPrintable(QString::number(colours.size())));
}

QTEST_GUILESS_MAIN(TestMonitorScreenshot)
#include "tst_monitorscreenshot.moc"
