#include "client/doctor/access_list.h"

#include <gtest/gtest.h>

namespace vpn {
namespace {

using Writers = std::vector<std::wstring>;

TEST(AccessListTest, ReadersAreNoWriters) {
  EXPECT_EQ(ForeignWriters(L"D:PAI(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;0x1200a9;;;BU)"),
            Writers());
  EXPECT_EQ(ForeignWriters(L"D:(A;;FRFX;;;WD)(A;;GRGX;;;AU)"), Writers());
}

// To list, to read and write attributes and extended ones, to enter, to read the list.
TEST(AccessListTest, RightsThatChangeNoProgramDoNotCount) {
  for (const wchar_t* right : {L"CC", L"SW", L"RP", L"WP", L"LO", L"CR", L"RC", L"0x1", L"0x8",
                               L"0x10", L"0x20", L"0x80", L"0x100", L"0x20000", L"0x100000"}) {
    EXPECT_EQ(ForeignWriters(std::wstring(L"D:(A;;") + right + L";;;BU)"), Writers()) << right;
  }
}

TEST(AccessListTest, EachRightThatChangesSomethingCounts) {
  for (const wchar_t* right :
       {L"0x2",        L"0x4", L"0x40", L"0x10000", L"0x40000", L"0x80000", L"0x10000000",
        L"0x40000000", L"DC",  L"LC",   L"DT",      L"SD",      L"WD",      L"WO",
        L"FA",         L"FW",  L"GA",   L"GW",      L"CCLC",    L"RCDC",    L"65536"}) {
    EXPECT_EQ(ForeignWriters(std::wstring(L"D:(A;;") + right + L";;;BU)"), Writers{L"the users"})
        << right;
  }
}

TEST(AccessListTest, WhoMayWriteIsNamedOnce) {
  EXPECT_EQ(ForeignWriters(L"D:(A;OICI;FA;;;WD)(A;;0x1301bf;;;BU)(A;;GW;;;AU)(A;;FA;;;WD)"),
            (Writers{L"everyone", L"the users", L"every user who is signed in"}));
}

TEST(AccessListTest, ARefusalIsNoRight) {
  EXPECT_EQ(ForeignWriters(L"D:(D;;FA;;;BU)(XD;;FA;;;WD;(1))"), Writers());
}

TEST(AccessListTest, AnEntryWithAConditionCounts) {
  EXPECT_EQ(ForeignWriters(LR"(D:(XA;;FA;;;WD;(@User.Title=="a)(" && (Member_of {SID(BA)}))))"
                           L"(A;;0x1200a9;;;BU)(OA;;FA;;;AU)(ZA;;FW;;;IU;(1))"),
            (Writers{L"everyone", L"every user who is signed in", L"every user at the screen"}));
}

TEST(AccessListTest, AnEntryThatIsNeverClosedDoesNoHarm) {
  EXPECT_EQ(ForeignWriters(L"D:(A;;FA;;;BU)("), Writers{L"the users"});
  EXPECT_EQ(ForeignWriters(L"D:(A;;FA;;;BU)(("), Writers{L"the users"});
}

TEST(AccessListTest, AnUnknownTrusteeIsNamedByItsNumber) {
  EXPECT_EQ(ForeignWriters(L"D:(A;;FA;;;S-1-5-21-1-2-3-1001)"), Writers{L"S-1-5-21-1-2-3-1001"});
}

TEST(AccessListTest, NoListAtAllAllowsEveryone) {
  EXPECT_EQ(ForeignWriters(L"D:NO_ACCESS_CONTROL"), Writers{L"everyone"});
  EXPECT_EQ(ForeignWriters(L"O:BA"), Writers{L"everyone"});
  EXPECT_EQ(ForeignWriters(L""), Writers{L"everyone"});
  EXPECT_EQ(ForeignWriters(L"D:P"), Writers());
}

TEST(AccessListTest, AnOwnerBesideTheAdministratorsMayRewriteTheList) {
  for (const wchar_t* owner :
       {L"BA", L"SY", L"LA", L"S-1-5-80-956008885-3418522649-1831038044-1853292631-2271478464"}) {
    EXPECT_EQ(ForeignWriters(std::wstring(L"O:") + owner + L"G:BAD:PAI(A;;FA;;;BA)"), Writers())
        << owner;
  }
  EXPECT_EQ(ForeignWriters(L"O:S-1-5-21-1-2-3-1001G:S-1-5-21-1-2-3-513D:PAI(A;;FA;;;BA)"),
            Writers{L"S-1-5-21-1-2-3-1001"});
  EXPECT_EQ(ForeignWriters(L"O:BGG:BGD:(A;;FA;;;WD)"), (Writers{L"everyone", L"the guests"}));
  EXPECT_EQ(ForeignWriters(L"O:BUD:(A;;FA;;;BU)"), Writers{L"the users"});
}

}  // namespace
}  // namespace vpn
