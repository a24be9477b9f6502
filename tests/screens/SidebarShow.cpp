// Paints the sidebar in its states, for those who want to look at it: pictures go into the folder given.
//
//     SidebarShow [--scale 2] FOLDER

#include "SidebarFixture.h"

#include "settings/AppSettings.h"
#include "support/Await.h"

#include <QDir>

using namespace talvenor;
using test::completedRecording;
using test::RenderedScene;
using test::Sidebar;

namespace {

class Show
{
public:
    Show(const QString &folder, ColorScheme scheme, AppLanguage language)
        : m_folder(folder), m_scheme(scheme), m_language(language)
    {
    }

    void empty() const
    {
        Sidebar bar({});
        paint(bar, QStringLiteral("empty"));
        bar.search(QStringLiteral("Budget"));
        paint(bar, QStringLiteral("no-results"));
    }

    void list() const
    {
        Sidebar bar(test::recordingsOfAllMarks());
        bar.viewModel.setSelectedRecording(bar.viewModel.recordings().at(3));
        bar.scene.hover(RenderedScene::rect(bar.row(4)).center());
        QTest::qWait(250);
        paint(bar, QStringLiteral("list"));
        bar.list.forceActiveFocus(Qt::TabFocusReason);
        paint(bar, QStringLiteral("keyboard"));
        bar.scene.click(RenderedScene::rect(bar.row(5)).center(), Qt::RightButton);
        QTest::qWait(150);
        paint(bar, QStringLiteral("menu"));
    }

    void recording() const
    {
        Sidebar bar(test::recordingsOfAllMarks().mid(3), {280, 640});
        bar.fixture.signIn();
        bar.viewModel.toggleRecording();
        if (!test::waitUntil([&] { return bar.viewModel.isRecording(); }))
            qFatal("no recording");
        bar.search(QStringLiteral("e"));
        paint(bar, QStringLiteral("recording"));
        bar.viewModel.stopRecording();
    }

    void titles() const
    {
        Sidebar bar(
            {completedRecording(
                 QStringLiteral("A very long title that tells everything about the meeting and more")),
             completedRecording(QStringLiteral("פגישה שבועית עם הצוות")),
             completedRecording(QStringLiteral("اجتماع الفريق الأسبوعي حول الميزانية السنوية للشركة")),
             completedRecording(QStringLiteral("🎉 Party 👩‍💻 planning 🇩🇪")),
             completedRecording(QStringLiteral("会議の議事録と予算")), completedRecording(QString()),
             completedRecording(QStringLiteral("<b>Bold</b> & one\ntwo\tthree")),
             test::withStatus(completedRecording(QStringLiteral("The end")), RecordingStatus::failed)},
            {280, 640});
        paint(bar, QStringLiteral("titles"));
    }

private:
    void paint(Sidebar &bar, const QString &name) const
    {
        bar.scene.setScheme(m_scheme);
        RenderedScene::setLanguage(m_language);
        bar.settle();
        QTest::qWait(60);
        const QString file =
            QStringLiteral("%1/%2-%3-%4-%5x.png")
                .arg(m_folder, name,
                     m_scheme == ColorScheme::dark ? QStringLiteral("dark") : QStringLiteral("light"),
                     m_language == AppLanguage::german ? QStringLiteral("de") : QStringLiteral("en"))
                .arg(bar.scene.window().effectiveDevicePixelRatio());
        QImage picture = bar.scene.grab();
        picture.setDevicePixelRatio(1);
        if (!picture.save(file))
            qFatal("cannot write %s", qPrintable(file));
    }

    QString m_folder;
    ColorScheme m_scheme;
    AppLanguage m_language;
};

int show(int count, char **arguments)
{
    if (count != 2)
        qFatal("usage: SidebarShow [--scale 2] FOLDER");
    const QString folder = QString::fromLocal8Bit(arguments[1]);
    if (!QDir().mkpath(folder))
        qFatal("cannot make %s", arguments[1]);
    for (const ColorScheme scheme : {ColorScheme::light, ColorScheme::dark}) {
        const Show pictures(folder, scheme,
                            scheme == ColorScheme::light ? AppLanguage::english : AppLanguage::german);
        pictures.empty();
        pictures.list();
        pictures.recording();
        pictures.titles();
    }
    const Show german(folder, ColorScheme::light, AppLanguage::german);
    german.list();
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    return test::runScreenTest(argc, argv, show);
}
