#include "core/ProgramFolder.h"
#include "localisation/LanguageState.h"
#include "localisation/LocaliseForms.h"
#include "localisation/PendingMessage.h"
#include "localisation/ShowMsg.h"
#include "testsupport/TestSupport.h"

#include <QtTest>
#include <QtWidgets>

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

    void write(const QString &name, const QByteArray &text)
    {
        QVERIFY(TestSupport::writeFile(m_dir.filePath("language/" + name), text));
    }
    // "name.property" of each control, joined by "|".
    QString properties(const QStringList &which) const
    {
        QStringList values;
        for (const QString &p : which)
            values << m_form->findChild<QObject *>(p.section(u'.', 0, 0))
                          ->property(qPrintable(p.section(u'.', 1)))
                          .toString();
        return values.join(u'|');
    }

    QWidget *buildForm()
    {
        m_form = std::make_unique<QWidget>();
        QWidget *form = m_form.get();
        form->setObjectName("frmTest");
        form->setProperty("tag", "form_caption@3");
        form->setWindowTitle("Entwurf");
        new QVBoxLayout(form);
        add<QLabel>(form, "lblProtocol", "Protokoll alt", "19049@3");
        add<QLabel>(form, "lblTipOnly", "Bleibt", "tip_only");
        add<QLabel>(form, "lblTextOnly", "Alt", "text_only");
        add<QLabel>(form, "lblEmpty", "Entworfen", "empty_value");
        add<QLabel>(form, "lblMissing", "Entworfen", "not_in_file");
        add<QLabel>(form, "lblNoKey", "Ohne Schlüssel");
        add<QPushButton>(form, "cmdQuit", "Beenden", "cmd_quit");
        add<QRadioButton>(form, "optLng_0", "Deutsch", "", 0);
        add<QRadioButton>(form, "optLng_1", "English", "", 1);
        add<QCheckBox>(form, "Check2", "Start protokollieren", "19005@2");
        add<QGroupBox>(form, "Frame1", "Startoptionen", "19001@2");
        add<QLineEdit>(form, "tbText", "", "tb_text");
        add<QLabel>(form, "Image1", "", "image_key")->setProperty("image", true);
        auto *tabs = new QTabWidget(form);
        tabs->setObjectName("SSTab19");
        tabs->setProperty("tag", "19");
        for (int i = 0; i < 3; ++i)
            tabs->addTab(new QWidget, QStringLiteral("Tab %1").arg(i));
        form->layout()->addWidget(tabs);
        auto *menu = new QMenu(form);
        menu->addAction("Datei")->setProperty("tag", "menu_file");
        menu->addSeparator()->setProperty("tag", "menu_file");
        return form;
    }

private slots:
    void initTestCase()
    {
        setProgramFolderForTesting(m_dir.path());
        write("language.us",
              "[us]\n19049=Hauptdatei\ntip_only=|Nur Tooltip\ntext_only=Nur Text\nempty_value=\n"
              "cmd_quit=&Quit|Ends the program\n0=German\n1=English|Switch to English\n"
              "tb_text=typed by file\nimage_key=Logo|The logo\nmenu_file=&File\n"
              "S19T0=Repair|Repair tools\nS19T1=|only a description\nS19T2=Fonts\n");
        write(
            "lng_3.us",
            "[us]\n19049=Protokoll|Zeigt das Protokoll\nform_caption=wrong key\nform_caption@3=Test form\n");
        write("lng_2.us", "[us]\n19005=Log the start\n19001=Start options|Options\n");
    }

    void localisesEveryControlType()
    {
        QWidget *form = buildForm();
        int languageByte = 0;
        // A form not listed keeps its design; forms are listed without regard to case.
        ChangeLanguage("us", "frmSupportKit", languageByte);
        QCOMPARE(form->findChild<QPushButton *>("cmdQuit")->text(), QString("Beenden"));
        QCOMPARE(ChangeLanguage("us", "frmSupportKit, frmtest", languageByte), QString("us"));
        QCOMPARE(languageByte, 2);
        // An empty value or a missing key keeps the design; "|tip" changes the tip only; array
        // members without a tag are looked up by their index; an image shows no text.
        QCOMPARE(properties({"lblProtocol.text", "lblProtocol.toolTip", "lblTipOnly.text",
                             "lblTipOnly.toolTip", "lblTextOnly.text", "lblTextOnly.toolTip", "lblEmpty.text",
                             "lblMissing.text", "lblNoKey.text"}),
                 QString::fromUtf8("Protokoll|Zeigt das Protokoll|Bleibt|Nur Tooltip|Nur Text|designed tip|"
                                   "Entworfen|Entworfen|Ohne Schlüssel"));
        QCOMPARE(properties({"cmdQuit.text", "cmdQuit.toolTip", "optLng_0.text", "optLng_1.toolTip",
                             "Check2.text", "Frame1.title", "tbText.text", "Image1.text", "Image1.toolTip"}),
                 QString("&Quit|Ends the program|German|Switch to English|Log the start|Start options|"
                         "typed by file||The logo"));
        // The form's own key is read as written, suffix included, from the suffix's file.
        QCOMPARE(form->windowTitle(), QString("Test form"));
        auto *tabs = form->findChild<QTabWidget *>("SSTab19");
        QCOMPARE(tabs->tabText(0) + u'|' + tabs->tabText(1) + u'|' + tabs->tabText(2),
                 QString("Repair|Tab 1|Fonts"));
        const QList<QAction *> actions = form->findChildren<QMenu *>().first()->actions();
        QCOMPARE(actions[0]->text(), QString("&File"));
        QVERIFY(actions[1]->isSeparator() && actions[1]->text().isEmpty());
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
        QCOMPARE(ShowMsg(1, "M189", 48, "Keine@Verbindung#Titel").toInt(), int(IDNO));
        QVERIFY(!ShowMsg(2, "M188", 64, "x").isValid());
        pendingMessage().text = "Vorbereitet@<var1>#Hinweis";
        pendingMessage().style = 48;
        ShowPendingMessage(nullptr, {"x"});
        setMessageAnswererForTesting({});
        QCOMPARE(shown.size(), 3);
        QCOMPARE(shown[0].message + u'#' + shown[0].title, QString("Connected to\ra.b#Test a.b"));
        QCOMPARE(shown[0].owner, &owner);
        QCOMPARE(shown[1].message, QString("Keine\rVerbindung"));
        QCOMPARE(shown[2].message, QString("Vorbereitet\rx"));
        QCOMPARE(shown[2].style, 48);
        QVERIFY(!pendingMessage().isSet());
    }

    void realBoxReturnsWindowsCodes_data()
    {
        QTest::addColumn<int>("style");
        QTest::addColumn<int>("press"); // -1: escape
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
