#include "media/SharedThumbnails.h"
#include "TestPictures.h"
#include "support/LogCapture.h"

#include <QColorSpace>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QUrl>

#include <gtest/gtest.h>

#include <map>

using namespace tb;
using namespace tb::test;

namespace {

QString uriOf(const QString& path) { return QString::fromLatin1(QUrl::fromLocalFile(path).toEncoded()); }

QString modifiedOf(const QString& path) { return QString::number(QFileInfo(path).lastModified().toSecsSinceEpoch()); }

// The user bits repeat whichever of owner, group and other applies to us, so they are left out.
QFileDevice::Permissions modeOf(const QString& path)
{
    return QFile::permissions(path) & ~(QFileDevice::ReadUser | QFileDevice::WriteUser | QFileDevice::ExeUser);
}

struct SharedThumbnailsTest : ::testing::Test {
    void SetUp() override
    {
        ASSERT_TRUE(writePicture(twoColourPicture(800, 600), picture));
        ASSERT_TRUE(writePicture(twoColourPicture(120, 90), icon));
    }
    QString thumbnailIn(const char* folder, const QString& path) const
    {
        const QByteArray hash = QCryptographicHash::hash(uriOf(path).toLatin1(), QCryptographicHash::Md5).toHex();
        return root + QLatin1Char('/') + QLatin1String(folder) + QLatin1Char('/') + QLatin1String(hash) +
               QStringLiteral(".png");
    }
    // A thumbnail as another program would leave it: valid for `path` unless `keys` says otherwise.
    void writeOthers(const char* folder, const QString& path, QSize size, std::map<QString, QString> keys = {},
                     const QColorSpace& space = {})
    {
        keys.try_emplace(QStringLiteral("Thumb::URI"), uriOf(path));
        keys.try_emplace(QStringLiteral("Thumb::MTime"), modifiedOf(path));
        QImage image = twoColourPicture(size.width(), size.height());
        image.setColorSpace(space);
        for (const auto& [key, value] : keys)
            image.setText(key, value);
        ASSERT_TRUE(QDir().mkpath(root + QLatin1Char('/') + QLatin1String(folder)));
        ASSERT_TRUE(image.save(thumbnailIn(folder, path), "PNG"));
    }

    QTemporaryDir cache;
    QTemporaryDir pictures;
    const QString root = cache.filePath(QStringLiteral("thumbnails"));
    // Space, accent and '#' tell the fully encoded URI from a readable one.
    const QString picture = pictures.filePath(QStringLiteral("summer été #1.png"));
    const QString icon = pictures.filePath(QStringLiteral("icon.png"));
    SharedThumbnails shared{root};
};

} // namespace

TEST_F(SharedThumbnailsTest, StoresPrivatelyUnderTheUriHashAndFindsOwnAndOthersThumbnails)
{
    shared.store(picture, twoColourPicture(240, 180));
    const QImage written(thumbnailIn("large", picture));
    ASSERT_EQ(written.size(), QSize(240, 180));
    EXPECT_EQ(written.text(QStringLiteral("Thumb::URI")), uriOf(picture));
    EXPECT_EQ(written.text(QStringLiteral("Thumb::MTime")), modifiedOf(picture));
    EXPECT_EQ(written.text(QStringLiteral("Thumb::Size")), QString::number(QFileInfo(picture).size()));
    EXPECT_EQ(written.text(QStringLiteral("Software")), QStringLiteral("Tallowbrook"));
    EXPECT_EQ(modeOf(thumbnailIn("large", picture)), QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    for (const QString& folder : {root, root + QStringLiteral("/large")})
        EXPECT_EQ(modeOf(folder), QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner)
            << folder.toStdString();
    EXPECT_EQ(QDir(root + QStringLiteral("/large")).entryList(QDir::Files | QDir::Hidden).size(), 1)
        << "no temporary file is left behind";

    shared.store(picture, twoColourPicture(1600, 1200));
    EXPECT_EQ(QImage(thumbnailIn("x-large", picture)).size(), QSize(512, 384)) << "scaled down to the folder's size";
    QFile::remove(thumbnailIn("x-large", picture));

    for (int asked : {100, 240})
        EXPECT_EQ(shared.find(picture, asked).value_or(QImage()).size(), QSize(240, 180)) << asked;
    EXPECT_FALSE(shared.find(picture, 250)) << "smaller than asked";
    writeOthers("x-large", picture, QSize(500, 375));
    EXPECT_EQ(shared.find(picture, 300).value_or(QImage()).size(), QSize(500, 375));
    // One that kept its photo's profile comes back in sRGB, as the photo would.
    writeOthers("x-large", picture, QSize(500, 375), {}, QColorSpace::DisplayP3);
    EXPECT_EQ(shared.find(picture, 300).value_or(QImage()).colorSpace(), QColorSpace(QColorSpace::SRgb));

    // An undersized thumbnail counts only when it records that the picture itself is no bigger.
    writeOthers("normal", icon, QSize(120, 90));
    EXPECT_FALSE(shared.find(icon, 128));
    writeOthers("normal", icon, QSize(120, 90),
                {{QStringLiteral("Thumb::Image::Width"), QStringLiteral("120")},
                 {QStringLiteral("Thumb::Image::Height"), QStringLiteral("90")}});
    EXPECT_TRUE(shared.find(icon, 128));
}

TEST_F(SharedThumbnailsTest, StaleMisnamedAndCorruptThumbnailsAreIgnoredButKept)
{
    shared.store(picture, twoColourPicture(200, 150));
    ASSERT_TRUE(shared.find(picture, 200));
    QFile file(picture);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.setFileTime(QFileInfo(picture).lastModified().addSecs(-3600), QFileDevice::FileModificationTime));
    file.close();
    EXPECT_FALSE(shared.find(picture, 200)) << "the picture changed since";
    EXPECT_TRUE(QFile::exists(thumbnailIn("large", picture)));
    shared.store(picture, twoColourPicture(200, 150));
    EXPECT_TRUE(shared.find(picture, 200)) << "replaced by a fresh one";

    writeOthers("large", picture, QSize(200, 150), {{QStringLiteral("Thumb::URI"), uriOf(icon)}});
    EXPECT_FALSE(shared.find(picture, 200)) << "names another file";

    shared.store(picture, twoColourPicture(200, 150));
    QFile thumbnail(thumbnailIn("large", picture));
    ASSERT_TRUE(thumbnail.open(QIODevice::ReadWrite) && thumbnail.resize(thumbnail.size() / 2));
    thumbnail.close();
    EXPECT_FALSE(shared.find(picture, 200)) << "truncated";
    EXPECT_TRUE(QFile::exists(thumbnailIn("large", picture)));
}

TEST_F(SharedThumbnailsTest, AnUnwritableCacheWarnsOnceAndTheCacheNeverThumbnailsItself)
{
    SharedThumbnails blocked(writeBytes(cache.filePath(QStringLiteral("plain file")), "x") +
                             QStringLiteral("/thumbnails"));
    LogCapture log;
    blocked.store(picture, twoColourPicture(200, 150));
    blocked.store(icon, twoColourPicture(120, 90));
    EXPECT_EQ(log.messages(LogLevel::Warning).size(), 1);

    shared.store(picture, twoColourPicture(200, 150));
    const QString inside = thumbnailIn("large", picture);
    shared.store(inside, twoColourPicture(200, 150));
    shared.store(pictures.filePath(QStringLiteral("missing.png")), twoColourPicture(200, 150));
    EXPECT_EQ(QDir(root + QStringLiteral("/large")).entryList(QDir::Files | QDir::Hidden).size(), 1)
        << "only the picture's own thumbnail";
    writeOthers("large", inside, QSize(200, 150));
    EXPECT_FALSE(shared.find(inside, 200));
}
