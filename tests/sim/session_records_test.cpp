// Names as FileMaker writes them, fields of the current record of a file's tables, and the
// user's interrupt.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "session_test_support.h"

using namespace session_test;

namespace {

constexpr const char* kSeed =
    "CREATE TABLE Contacts (Name TEXT, Born DATE, Age INTEGER, \"Last Seen\" TIMESTAMP);\n"
    "INSERT INTO Contacts (rowid, Name, Born, Age) VALUES (3, 'Ann', '1990-05-01', 34),\n"
    "  (7, 'Bob', NULL, 40), (9, 'Cy', '2000-01-02', 24);\n"
    "CREATE TABLE Invoices (Total REAL);\n"
    "INSERT INTO Invoices VALUES (12.5), (7);\n"
    "CREATE TABLE Empty (x);\n";

sim::SessionOptions seeded(std::vector<std::pair<std::string, int64_t>> records = {}) {
    sim::SessionOptions o = noPlugin();
    o.seedSql = kSeed;
    o.records = std::move(records);
    o.otherFiles = {"Other"};
    return o;
}

struct Expect {
    const char* calculation;
    const char* text;
    short error;
};

void check(sim::Session& session, std::initializer_list<Expect> cases) {
    for (const Expect& c : cases) {
        const sim::EvalResult r = session.eval(c.calculation);
        EXPECT_EQ(r.error, c.error) << c.calculation << ": " << r.text;
        if (c.error == 0) {
            EXPECT_EQ(r.text, c.text) << c.calculation;
        }
    }
}

TEST(Names, TildesAndDotsAreNameCharacters) {
    sim::Session session(noPlugin());
    check(session, {
                       {"Let ( ~x = 1 ; ~x + 1 )", "2", 0},
                       {"Let ( [ ~a = 2 ; ~a.b = ~a * 3 ] ; ~a.b )", "6", 0},
                       {"Let ( $~x = 2 ; $~X )", "2", 0},
                       {"Let ( $$~PRIVATE = 3 ; $$~private )", "3", 0},
                       {"Let ( $$APP.NAME = \"n\" ; $$app.name & $$APP.NAME )", "nn", 0},
                       {"Let ( $$v.1 = 4 ; $$v.1[1] )", "4", 0},
                       {"Let ( x~y = 5 ; x~y )", "5", 0},
                       // A leading dot still starts a number, not a name.
                       {".5 + .25", "0.75", 0},
                       {"Let ( ~x = 1 ; ~x ) & .5", "10.5", 0},
                       // Names remain distinct from the neighbouring operators.
                       {"Let ( [ a = 1 ; b = 2 ] ; a&b )", "12", 0},
                       {"Let ( ~ = 1 ; ~ )", "1", 0},
                       {"Let ( .x = 1 ; .x )", "", 1209},
                       {"$.x", "", 1209},
                       {"Let ( ~x = 1 ; ~x = 2 )", "0", 0},
                   });
    // The variables appear under their own spelling.
    const auto globals = session.host().fileGlobals(u"Demo")->list();
    ASSERT_EQ(globals.size(), 3u);
    EXPECT_EQ(sim::toUtf8(globals[0].first), "$$APP.NAME");
    EXPECT_EQ(sim::toUtf8(globals[2].first), "$$~PRIVATE");
}

TEST(Fields, ReadTheCurrentRecordOfTheirTable) {
    sim::Session session(seeded({{"contacts", 7}}));
    check(session, {
                       {"Contacts::Name", "Bob", 0},
                       {"CONTACTS::name & \"/\" & Contacts::Age", "Bob/40", 0},
                       {"Contacts::Age + 1", "41", 0},
                       {"Contacts::Born", "", 0},  // NULL reads as empty
                       {"IsEmpty ( Contacts::Born )", "1", 0},
                       {"Contacts::Name[1] & Contacts::Name[2]", "Bob", 0},
                       // A table without a chosen record is read at its first record.
                       {"Invoices::Total * 2", "25", 0},
                       {"Empty::x", "", 0},
                       // Bare names are the current table's fields unless they are something else.
                       {"Name & Age", "Bob40", 0},
                       {"Let ( Name = \"let\" ; Name )", "let", 0},
                       {"GetField ( \"Name\" )", "Bob", 0},
                       {"GetField ( \"Invoices::Total\" )", "12.5", 0},
                       {"GetField ( \"Contacts::\" & \"Age\" ) - 40", "0", 0},
                       {"Get ( RecordNumber ) & \"/\" & Get ( FoundCount )", "2/3", 0},
                       {"Get ( RecordID ) & \"/\" & Get ( TotalRecordCount )", "7/3", 0},
                       {"GetRepetition ( Contacts::Name ; 1 )", "Bob", 0},
                       {"GetRepetition ( Name ; 2 )", "", 0},
                       {"GetRepetition ( Contacts::Name ; 0 )", "", 0},
                       {"Let ( $v[3] = \"c\" ; GetRepetition ( $v ; 1 + 2 ) )", "c", 0},
                       {"GetRepetition ( Contacts::Nope ; 1 )", "", 102},
                       {"GetRepetition ( \"Name\" ; 1 )", "", 1214},
                       {"GetRepetition ( Contacts::Name & \"\" ; 1 )", "", 1214},
                   });
    EXPECT_EQ(session.eval("Contacts::Born").type, "Text");
}

TEST(Fields, UnknownFieldsAreErrorOneHundredTwo) {
    sim::Session session(seeded({{"Contacts", 3}}));
    const struct {
        const char* calculation;
        short error;
        const char* detail;
    } cases[] = {
        {"Contacts::Nope", 102, "no field Contacts::Nope"},
        {"Nowhere::Name", 102, "no field Nowhere::Name"},
        {"GetField ( \"Nope\" )", 102, "no field Nope"},
        {"GetField ( \"\" )", 102, "no field "},
        {"GetField ( \"Nowhere::Name\" )", 102, "no field Nowhere::Name"},
        {"Nope", 1208, "no variable, constant or function named Nope"},
        // A text constant of that name is no field, whatever SQL would make of it.
        {"Contacts::Last", 102, "no field Contacts::Last"},
        {"Self", 1225, "Self needs a field or layout object"},
        {"Contacts::Name ( 1 )", 1208, ""},
    };
    for (const auto& c : cases) {
        const sim::EvalResult r = session.eval(c.calculation);
        EXPECT_EQ(r.error, c.error) << c.calculation;
        EXPECT_EQ(r.message, sim::errorMessage(c.error)) << c.calculation;
        if (*c.detail != '\0') {
            EXPECT_EQ(r.detail, c.detail) << c.calculation;
        }
    }
    EXPECT_EQ(sim::errorMessage(102), "Field is missing");
    check(session, {
                       {"IsEmpty ( Contacts::Nope )", "1", 0},
                       {"EvaluationError ( Evaluate ( \"Contacts::Nope\" ) )", "102", 0},
                       {"IsValid ( Contacts::Nope )", "0", 0},
                   });
}

TEST(Fields, CurrentRecordsAreChosenPerFile) {
    sim::Session session(seeded());
    sim::Host& host = session.host();
    // Without a current table there is no found set and bare names are not fields.
    check(session, {{"Get ( FoundCount ) & Get ( RecordNumber )", "00", 0},
                    {"Contacts::Name", "Ann", 0},
                    {"Name", "", 1208}});
    const struct {
        const char* table;
        int64_t rowid;
        const char* wrong;  // empty: accepted
    } choices[] = {
        {"Contacts", 9, ""},
        {"contacts", 8, "no record 8 in Contacts"},
        {"Nowhere", 1, "no table Nowhere in Demo"},
        {"Empty", 1, "no record 1 in Empty"},
        {"Invoices", 2, ""},
    };
    for (const auto& c : choices) {
        EXPECT_EQ(host.setCurrentRecord(u"Demo", sim::fromUtf8(c.table), c.rowid), c.wrong)
            << c.table;
    }
    // The last table given a record is the current one; each table keeps its own record.
    check(session, {{"Total & \"/\" & Contacts::Name", "7/Cy", 0},
                    {"Get ( RecordNumber ) & \"/\" & Get ( FoundCount )", "2/2", 0}});
    const auto records = host.currentRecords(u"Demo");
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(sim::toUtf8(records[0].table), "Contacts");
    EXPECT_EQ(records[0].rowid, 9);
    EXPECT_FALSE(records[0].current);
    EXPECT_TRUE(records[1].current);
    // Another file has tables of its own.
    check(session, {});
    EXPECT_FALSE(session.eval("Contacts::Name", "Other").error == 0);
    // A record deleted under the calculation reads empty and has no place.
    ASSERT_EQ(session.eval("ExecuteSQL ( \"SELECT count(*) FROM Invoices\" ; \"\" ; \"\" )").text,
              "2");
    host.database(u"Demo")->runScript("DELETE FROM Invoices WHERE rowid = 2;");
    check(session,
          {{"Total", "", 0}, {"Get ( RecordNumber ) & \"/\" & Get ( FoundCount )", "0/1", 0}});
}

TEST(Fields, BadRecordOptionsStopTheSession) {
    sim::SessionOptions o = seeded({{"Contacts", 4}});
    try {
        sim::Session session(o);
        ADD_FAILURE() << "started";
    } catch (const sim::SessionError& e) {
        EXPECT_STREQ(e.what(), "--record Contacts=4: no record 4 in Contacts");
    }
}

TEST(Interrupts, StopCalculationsAndIdleWaits) {
    sim::Session session(noPlugin());
    sim::Host& host = session.host();
    const char* longLoop =
        "While ( i = 0 ; i < 50000 ; i = i + 1 + 0 * While ( j = 0 ; j < 50000 ; j = j + 1 ; j )"
        " ; i )";
    const auto started = std::chrono::steady_clock::now();
    // Pressed while the calculation runs (it would take minutes).
    std::thread user([&host] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        host.interruptFlag() = true;
    });
    EXPECT_EQ(session.eval(longLoop).error, 1);
    user.join();
    EXPECT_EQ(session.eval(longLoop).message, "User canceled action");
    session.idleFor(std::chrono::hours(1));
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(30));
    // The session goes on: variables set before stay, and cleared, calculations run again.
    host.clearInterrupt();
    EXPECT_EQ(session.eval("Let ( $$kept = 1 ; While ( i = 0 ; i < 3000 ; i = i + 1 ; i ) )").text,
              "3000");
    host.interruptFlag() = true;
    EXPECT_EQ(session.eval("Let ( $$kept = 2 ; " + std::string(longLoop) + " )").error, 1);
    host.clearInterrupt();
    EXPECT_EQ(session.eval("$$kept").text, "2");
}

}  // namespace
