#include "core/ProgramFolder.h"
#include "localisation/LanguageState.h"
#include "localisation/LocaliseForms.h"
#include "localisation/PendingMessage.h"
#include "localisation/ShowMsg.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QVBoxLayout>

namespace {
template <typename T>
T *add(QWidget *form, const char *name, const QString &text, const QString &tag = {}, int index = -1)
{
    auto *w = new T(text, form);
    w->setObjectName(QString::fromLatin1(name));
    w->setToolTip(QStringLiteral("designed tip"));
    if (!tag.isEmpty())
        w->setProperty("tag", tag);
    if (index >= 0)
        w->setProperty("index", index);
    form->layout()->addWidget(w);
    return w;
}
} // namespace

class TestLocaliseForms : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    std::unique_ptr<QWidget> m_form;

    void write(const QString &name, const QString &text)
    {
        QFile f(m_dir.filePath("language/" + name));
        QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
        f.write(text.toUtf8());
    }

    QWidget *buildForm()
    {
        m_form = std::make_unique<QWidget>();
        m_form->setObjectName("frmTest");
        m_form->setProperty("tag", "form_caption@3");
        m_form->setWindowTitle("Entwurf");
        new QVBoxLayout(m_form.get());
        add<QLabel>(m_form.get(), "lblProtocol", "Protokoll alt", "19049@3");
        add<QLabel>(m_form.get(), "lblTipOnly", "Bleibt", "tip_only");
        add<QLabel>(m_form.get(), "lblTextOnly", "Alt", "text_only");
        add<QLabel>(m_form.get(), "lblEmpty", "Entworfen", "empty_value");
        add<QLabel>(m_form.get(), "lblMissing", "Entworfen", "not_in_file");
        add<QLabel>(m_form.get(), "lblNoKey", "Ohne Schlüssel");
        add<QPushButton>(m_form.get(), "cmdQuit", "Beenden", "cmd_quit");
        add<QRadioButton>(m_form.get(), "optLng_0", "Deutsch", "", 0);
        add<QRadioButton>(m_form.get(), "optLng_1", "English", "", 1);
        add<QCheckBox>(m_form.get(), "Check2", "Start protokollieren", "19005@2");
        add<QGroupBox>(m_form.get(), "Frame1", "Startoptionen", "19001@2");
        add<QLineEdit>(m_form.get(), "tbText", "", "tb_text");
        add<QLabel>(m_form.get(), "Image1", "", "image_key")->setProperty("image", true);
        auto *tabs = new QTabWidget(m_form.get());
        tabs->setObjectName("SSTab19");
        tabs->setProperty("tag", "19");
        for (int i = 0; i < 3; ++i)
            tabs->addTab(new QWidget, QStringLiteral("Tab %1").arg(i));
        m_form->layout()->addWidget(tabs);
        auto *menu = new QMenu(m_form.get());
        QAction *item = menu->addAction("Datei");
        item->setProperty("tag", "menu_file");
        QAction *sep = menu->addSeparator();
        sep->setProperty("tag", "menu_file");
        return m_form.get();
    }

private slots:
    void initTestCase()
    {
        QDir(m_dir.path()).mkpath("language");
        setProgramFolderForTesting(m_dir.path());
        write("language.us", "[us]\n"
                             "19049=Hauptdatei\n"
                             "tip_only=|Nur Tooltip\n"
                             "text_only=Nur Text\n"
                             "empty_value=\n"
                             "cmd_quit=&Quit|Ends the program\n"
                             "0=German\n"
                             "1=English|Switch to English\n"
                             "tb_text=typed by file\n"
                             "image_key=Logo|The logo\n"
                             "menu_file=&File\n"
                             "S19T0=Repair|Repair tools\n"
                             "S19T1=|only a description\n"
                             "S19T2=Fonts\n");
        write(
            "lng_3.us",
            "[us]\n19049=Protokoll|Zeigt das Protokoll\nform_caption=wrong key\nform_caption@3=Test form\n");
        write("lng_2.us", "[us]\n19005=Log the start\n19001=Start options|Options\n");
    }

    void localisesEveryControlType()
    {
        QWidget *form = buildForm();
        int languageByte = 0;
        QCOMPARE(ChangeLanguage("us", "frmSupportKit, frmTest", languageByte), QString("us"));
        QCOMPARE(languageByte, 2);

        auto label = [&](const char *n) { return form->findChild<QLabel *>(n); };
        QCOMPARE(label("lblProtocol")->text(), QString("Protokoll"));
        QCOMPARE(label("lblProtocol")->toolTip(), QString("Zeigt das Protokoll"));
        QCOMPARE(label("lblTipOnly")->text(), QString("Bleibt"));
        QCOMPARE(label("lblTipOnly")->toolTip(), QString("Nur Tooltip"));
        QCOMPARE(label("lblTextOnly")->text(), QString("Nur Text"));
        QCOMPARE(label("lblTextOnly")->toolTip(), QString("designed tip"));
        QCOMPARE(label("lblEmpty")->text(), QString("Entworfen"));
        QCOMPARE(label("lblMissing")->text(), QString("Entworfen"));
        QCOMPARE(label("lblNoKey")->text(), QString::fromUtf8("Ohne Schlüssel"));
        QCOMPARE(form->findChild<QPushButton *>("cmdQuit")->text(), QString("&Quit"));
        QCOMPARE(form->findChild<QPushButton *>("cmdQuit")->toolTip(), QString("Ends the program"));
        // Array members without a tag are looked up by their index.
        QCOMPARE(form->findChild<QRadioButton *>("optLng_0")->text(), QString("German"));
        QCOMPARE(form->findChild<QRadioButton *>("optLng_1")->toolTip(), QString("Switch to English"));
        QCOMPARE(form->findChild<QCheckBox *>("Check2")->text(), QString("Log the start"));
        QCOMPARE(form->findChild<QGroupBox *>("Frame1")->title(), QString("Start options"));
        QCOMPARE(form->findChild<QLineEdit *>("tbText")->text(), QString("typed by file"));
        QCOMPARE(label("Image1")->text(), QString());
        QCOMPARE(label("Image1")->toolTip(), QString("The logo"));
        // The form's own key is read as written, suffix included, from the suffix's file.
        QCOMPARE(form->windowTitle(), QString("Test form"));

        auto *tabs = form->findChild<QTabWidget *>("SSTab19");
        QCOMPARE(tabs->tabText(0), QString("Repair"));
        QCOMPARE(tabs->tabText(1), QString("Tab 1"));
        QCOMPARE(tabs->tabText(2), QString("Fonts"));

        const QList<QAction *> actions = form->findChildren<QMenu *>().first()->actions();
        QCOMPARE(actions[0]->text(), QString("&File"));
        QVERIFY(actions[1]->isSeparator());
        QVERIFY(actions[1]->text().isEmpty());
    }

    void suffixFileAbsentAndFormNotListed()
    {
        // Without lng_3 the bare key is looked up in language.us.
        QFile::rename(m_dir.filePath("language/lng_3.us"), m_dir.filePath("language/lng_3.off"));
        QWidget *form = buildForm();
        int languageByte = 0;
        ChangeLanguage("us", "frmtest", languageByte);
        QFile::rename(m_dir.filePath("language/lng_3.off"), m_dir.filePath("language/lng_3.us"));
        QCOMPARE(form->findChild<QLabel *>("lblProtocol")->text(), QString("Hauptdatei"));
        // A form left out of the list stays as designed.
        form = buildForm();
        ChangeLanguage("us", "frmSupportKit", languageByte);
        QCOMPARE(form->findChild<QPushButton *>("cmdQuit")->text(), QString("Beenden"));
    }

    void selectedItem()
    {
        QWidget *form = buildForm();
        QCOMPARE(GetSelectedItem(1, form, "optLng").toInt(), -1);
        form->findChild<QRadioButton *>("optLng_1")->setChecked(true);
        QCOMPARE(GetSelectedItem(1, form, "optLng").toInt(), 1);
        QVERIFY(!GetSelectedItem(3, form, "optLng").isValid());
    }

    void showMsgComposesAndAnswers()
    {
        write("lng_msg.us", "[us]\nM188=Connected to@<var1>#Test <var1>\n");
        RefreshLngFiles("us");
        QList<ShownMessage> shown;
        setMessageAnswererForTesting([&](const ShownMessage &m) {
            shown.append(m);
            return int(IDNO);
        });
        QWidget owner;
        QCOMPARE(ShowMsg(1, "M188", 64, "Deutsch#Titel", &owner, {"a.b"}).toInt(), int(IDNO));
        QCOMPARE(shown.size(), 1);
        QCOMPARE(shown[0].message, QString("Connected to\ra.b"));
        QCOMPARE(shown[0].title, QString("Test a.b"));
        QCOMPARE(shown[0].owner, &owner);
        QCOMPARE(ShowMsg(1, "M189", 48, "Keine@Verbindung#Titel").toInt(), int(IDNO));
        QCOMPARE(shown[1].message, QString("Keine\rVerbindung"));
        QVERIFY(!ShowMsg(2, "M188", 64, "x").isValid());
        QCOMPARE(shown.size(), 2);

        pendingMessage().text = "Vorbereitet@<var1>#Hinweis";
        pendingMessage().style = 48;
        ShowPendingMessage(nullptr, {"x"});
        QCOMPARE(shown[2].message, QString("Vorbereitet\rx"));
        QCOMPARE(shown[2].style, 48);
        QVERIFY(!pendingMessage().isSet());
        setMessageAnswererForTesting({});
    }

    void realBoxReturnsWindowsCodes_data()
    {
        QTest::addColumn<int>("style");
        QTest::addColumn<int>("press");
        QTest::addColumn<int>("expected");
        QTest::newRow("ok") << 64 << int(QMessageBox::Ok) << int(IDOK);
        QTest::newRow("ok/cancel: cancel") << 1 << int(QMessageBox::Cancel) << int(IDCANCEL);
        QTest::newRow("yes/no/cancel: no") << 3 + 32 << int(QMessageBox::No) << int(IDNO);
        QTest::newRow("yes/no: yes") << 4 << int(QMessageBox::Yes) << int(IDYES);
        QTest::newRow("retry/cancel: retry") << 5 + 16 << int(QMessageBox::Retry) << int(IDRETRY);
        QTest::newRow("ok: escape") << 48 << -1 << int(IDOK);
        QTest::newRow("yes/no/cancel: escape") << 3 << -1 << int(IDCANCEL);
    }
    void realBoxReturnsWindowsCodes()
    {
        QFETCH(int, style);
        QFETCH(int, press);
        QMessageBox::Icon icon = QMessageBox::NoIcon;
        QTimer::singleShot(0, [&] {
            auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            QVERIFY(box);
            icon = box->icon();
            if (press < 0)
                QTest::keyClick(box, Qt::Key_Escape);
            else
                box->button(QMessageBox::StandardButton(press))->click();
        });
        QTEST(ShowMsg(1, "", style, "Text#Titel").toInt(), "expected");
        const QMessageBox::Icon icons[] = {QMessageBox::NoIcon, QMessageBox::Critical, QMessageBox::Question,
                                           QMessageBox::Warning, QMessageBox::Information};
        QCOMPARE(icon, icons[(style & 0xF0) >> 4]);
    }
};

QTEST_MAIN(TestLocaliseForms)
#include "tst_localiseforms.moc"
