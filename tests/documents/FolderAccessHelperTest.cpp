#include "documents/FolderAccessHelper.h"
#include "core/FileSystems.h"
#include "support/LogCapture.h"
#include "support/ScriptedUserDialogs.h"

#include <QDir>
#include <QTemporaryDir>

#include <memory>

#include <gtest/gtest.h>

using namespace tb;
using namespace tb::test;

namespace {

// Everything under one folder counts as a network volume.
class FakeFileSystems final : public FileSystems {
public:
    explicit FakeFileSystems(QString root) : root(std::move(root)) {}
    bool isNetworkPath(const QString& path) const override { return path.startsWith(root); }

private:
    QString root;
};

struct FolderAccessTest : ::testing::Test {
    QTemporaryDir dir;
    QString share = dir.filePath(QStringLiteral("share"));
    QString disk = dir.filePath(QStringLiteral("share/disk"));
    FakeFileSystems fileSystems{share + QLatin1Char('/')};
    ScriptedUserDialogs dialogs;
    LogCapture log;

    FolderAccessTest() { QDir().mkpath(disk); }

    static QList<QUrl> urls(const QStringList& paths)
    {
        QList<QUrl> result;
        for (const QString& path : paths)
            result.append(QUrl::fromLocalFile(path));
        return result;
    }
    static QList<IdentifiableImage> images(const QStringList& paths)
    {
        QList<IdentifiableImage> result;
        for (const QUrl& url : urls(paths))
            result.append(IdentifiableImage({}, url, url.fileName(), {}, std::nullopt, false, false, std::nullopt));
        return result;
    }
};

} // namespace

TEST_F(FolderAccessTest, TheFolderOfTheFirstNetworkFileIsTheOneAskedFor)
{
    FolderAccessHelper helper(dialogs, fileSystems);
    const QString detected = QStringLiteral("📁 Detected network volume files in common folder: ");

    EXPECT_EQ(helper.detectNetworkVolumeFolder(urls({"/home/x/a.jpg", "/home/x/b.jpg"})), std::nullopt);
    helper.secureAccessForLoad(images({"/home/x/a.jpg"}));
    EXPECT_TRUE(dialogs.prompts.isEmpty());
    EXPECT_TRUE(log.all().isEmpty()) << "local files are not mentioned";

    EXPECT_EQ(helper.detectNetworkVolumeFolder(urls({"/home/x/b.jpg", disk + "/a.jpg", disk + "/c.jpg"})), disk);
    EXPECT_EQ(log.messages(LogLevel::Info).filter(detected), QStringList{detected + disk});

    EXPECT_EQ(helper.detectNetworkVolumeFolder(urls({disk + "/a.jpg", share + "/other/b.jpg"})), disk)
        << "files in several folders count as lying in the first one's";
    EXPECT_EQ(log.messages(LogLevel::Info).filter(detected).size(), 1) << "no common folder, no line";
}

TEST_F(FolderAccessTest, AskingNeverStopsTheLoadAndAGrantIsAskedOnceARun)
{
    auto owned = std::make_unique<FolderAccessHelper>(dialogs, fileSystems);
    FolderAccessHelper& helper = *owned;
    const auto onDisk = images({disk + "/a.jpg", disk + "/b.jpg"});
    const QString notGranted = QStringLiteral("⚠️ Folder access not granted, loading anyway (may have issues)");

    dialogs.questionAnswers = {QuestionAnswer{1, false, false}};
    helper.secureAccessForLoad(onDisk);
    ASSERT_EQ(dialogs.prompts.size(), 1) << "skipping shows no panel";
    EXPECT_EQ(dialogs.prompts[0].style, AlertStyle::Information);
    EXPECT_EQ(dialogs.prompts[0].title, QStringLiteral("Network Drive Access Required"));
    EXPECT_EQ(dialogs.prompts[0].text,
              QStringLiteral("Your slideshow contains files from a network drive (NAS).\n\nTo display images "
                             "properly, please grant access to the folder:\ndisk\n\nYou'll be asked to select this "
                             "folder in the next dialog."));
    EXPECT_EQ(dialogs.prompts[0].buttons, (QStringList{"Grant Access", "Skip"}));
    EXPECT_TRUE(log.contains(LogLevel::Info, "📁 Network volume detected, requesting folder access"));
    EXPECT_TRUE(log.contains(LogLevel::Info, "⏭️ User skipped folder access request"));
    EXPECT_TRUE(log.contains(LogLevel::Warning, notGranted));

    dialogs.prompts.clear();
    EXPECT_EQ(helper.requestFolderAccess(disk), std::nullopt) << "granted, then the panel cancelled";
    EXPECT_TRUE(log.contains(LogLevel::Warning, "❌ User cancelled folder selection"));
    ASSERT_EQ(dialogs.prompts.size(), 2);
    const OpenPanelOptions& panel = dialogs.prompts[1].open;
    EXPECT_EQ(panel.message, QStringLiteral("Select the folder containing your slideshow images"));
    EXPECT_EQ(panel.prompt, QStringLiteral("Grant Access"));
    EXPECT_EQ(panel.directory, disk);
    EXPECT_TRUE(!panel.canChooseFiles && panel.canChooseDirectories && !panel.canCreateDirectories &&
                !panel.allowsMultipleSelection);

    // A folder that cannot be read is still the answer, but is not counted as open.
    const QString gone = share + QStringLiteral("/gone");
    dialogs.openAnswers = {{gone}};
    EXPECT_EQ(helper.requestFolderAccess(disk), gone);
    EXPECT_TRUE(log.contains(LogLevel::Warning,
                             "⚠️ Failed to start accessing security-scoped resource, but folder was selected"));
    EXPECT_TRUE(helper.activeSecurityScopedURLs().isEmpty());

    dialogs.openAnswers = {{disk}};
    helper.secureAccessForLoad(onDisk);
    EXPECT_TRUE(log.contains(LogLevel::Info, "✅ User granted access to folder: " + disk));
    EXPECT_TRUE(log.contains(LogLevel::Info, "🔓 Started accessing security-scoped resource: " + disk));
    EXPECT_TRUE(log.contains(LogLevel::Info, "✅ Folder access granted: " + disk));
    EXPECT_EQ(helper.activeSecurityScopedURLs(), QStringList{disk});

    const qsizetype asked = dialogs.prompts.size();
    helper.secureAccessForLoad(onDisk);
    EXPECT_EQ(dialogs.prompts.size(), asked);
    EXPECT_TRUE(log.contains(LogLevel::Info, "✅ Already have folder access"));
    EXPECT_EQ(log.messages(LogLevel::Warning).count(notGranted), 1);

    owned.reset();
    EXPECT_TRUE(log.contains(LogLevel::Info, "🔒 Stopped accessing security-scoped resource: " + disk));
}
