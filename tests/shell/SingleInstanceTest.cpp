#include "shell/SingleInstance.h"
#include "support/LogCapture.h"

#include <QLocalSocket>
#include <QSignalSpy>
#include <QTest>
#include <QUuid>

#include <gtest/gtest.h>

using namespace tb;

namespace {

QString uniqueName() { return QStringLiteral("tallowbrook-test-") + QUuid::createUuid().toString(QUuid::Id128); }

} // namespace

TEST(SingleInstance, ASecondLaunchHandsItsFilesToTheRunningOne)
{
    const QString name = uniqueName();
    SingleInstance running(name);
    ASSERT_TRUE(running.listen());
    QSignalSpy files(&running, &SingleInstance::filesRequested);
    QSignalSpy activations(&running, &SingleInstance::activationRequested);

    SingleInstance second(name);
    ASSERT_TRUE(second.forwardToRunningInstance({QStringLiteral("/shows/Trip.slideshow"), QStringLiteral("/ü/b c")}));
    ASSERT_TRUE(files.wait(5000));
    EXPECT_EQ(files.at(0).at(0).toStringList(),
              (QStringList{QStringLiteral("/shows/Trip.slideshow"), QStringLiteral("/ü/b c")}));

    ASSERT_TRUE(second.forwardToRunningInstance({}));
    ASSERT_TRUE(activations.wait(5000));
    EXPECT_EQ(files.count(), 1);
}

TEST(SingleInstance, WithNobodyListeningTheLaunchGoesOnAndClaimsTheName)
{
    const QString name = uniqueName();
    SingleInstance first(name);
    EXPECT_FALSE(first.forwardToRunningInstance({QStringLiteral("/a.slideshow")}, 500));
    EXPECT_TRUE(first.listen());
}

TEST(SingleInstance, GarbageOnTheSocketIsIgnored)
{
    const QString name = uniqueName();
    SingleInstance running(name);
    ASSERT_TRUE(running.listen());
    QSignalSpy files(&running, &SingleInstance::filesRequested);
    test::LogCapture capture;

    QLocalSocket socket;
    socket.connectToServer(name);
    ASSERT_TRUE(socket.waitForConnected(2000));
    socket.write("{\"not\": \"a list\"}\n");
    ASSERT_TRUE(socket.waitForBytesWritten(2000));
    ASSERT_TRUE(QTest::qWaitFor([&] { return !capture.messages(LogLevel::Warning).isEmpty(); }, 5000));
    EXPECT_EQ(capture.messages(LogLevel::Warning),
              QStringList{QStringLiteral("Ignored a malformed file open request from another launch")});
    EXPECT_EQ(files.count(), 0);
}
