#include "client/report/secrets.h"

#include "tests/unit/client/client_test.h"

namespace vpn {
namespace {

using Texts = std::vector<std::string>;

class SecretsTest : public unit::ClientTest {};

TEST_F(SecretsTest, AreFoundByTheirKeys) {
  EXPECT_EQ(SecretsIn(R"({"email":"a@b.example","password":"hunter22","uuid":"6f2c9d4e",
    "publicKey":"AAAA","shortId":"0123abcd","port":443})"),
            (Texts{"hunter22", "6f2c9d4e", "AAAA", "0123abcd"}));
  EXPECT_EQ(SecretsIn(R"({"auth_data":"credential","token":"x","password":""})"),
            (Texts{"credential", "x"}));
  EXPECT_EQ(SecretsIn(""), Texts());
}

TEST_F(SecretsTest, AreScrubbedWhereverTheyStand) {
  EXPECT_EQ(Scrub("one hunter22, two hunter22hunter22", {"hunter22"}), "one ***, two ******");
}

TEST_F(SecretsTest, ANameThatIsNoAddressIsOne) {
  EXPECT_EQ(SecretsIn(R"({"email":"wanderer"})"), Texts{"wanderer"});
  EXPECT_EQ(SecretsIn(R"({"email":"a@b.example"})"), Texts());
}

TEST_F(SecretsTest, AShortOneInsideALongerOneLeavesNothingOfIt) {
  EXPECT_EQ(Scrub("one two-one two", {"one", "two", "two-one"}), "*** *** ***");
  EXPECT_EQ(Scrub("hunter hunter22", {"hunter", "hunter22"}), "*** ***");
}

TEST_F(SecretsTest, AShortOneCountsAsAWholeWordAlone) {
  EXPECT_EQ(Scrub("abc abcd xabc-1 (abc) abc", {"abc"}), "*** abcd xabc-1 (***) ***");
  EXPECT_EQ(Scrub("*", {"*"}), "***");
}

TEST_F(SecretsTest, AddressesOfPeopleAreMasked) {
  EXPECT_EQ(Scrub("from someone@mail.example to x@y.example.", {}),
            "from so***@mail.example to x***@y.example.");
  EXPECT_EQ(Scrub("@", {}), "***@");
  EXPECT_EQ(Scrub("so***@mail.example", {}), "so***@mail.example");
}

TEST_F(SecretsTest, LongWordsOfLettersAndDigitsAreMasked) {
  EXPECT_EQ(Scrub("key 6f2c9d4e-5b1a-4c3d-8e7f-0123456789ab end", {}), "key *** end");
  EXPECT_EQ(Scrub("123456789012345678901234567890 averyveryverylongwordwithoutdigits", {}),
            "123456789012345678901234567890 averyveryverylongwordwithoutdigits");
}

TEST_F(SecretsTest, TheShapeKeepsKeysAndDropsValues) {
  EXPECT_EQ(ShapeOfJson(R"({ "a": "secret", "b": [1, -2.5e3, true, null, "x\"y"], "c": {} })"),
            R"({ "a": "***", "b": [*, *, *, *, "***"], "c": {} })");
}

TEST_F(SecretsTest, ADamagedShapeStillHasNoValues) {
  EXPECT_EQ(ShapeOfJson(R"({"a":"secret)"), R"({"a":"***")");
  EXPECT_EQ(ShapeOfJson("no json at all"), "* * * *");
  EXPECT_EQ(ShapeOfJson(""), "");
}

}  // namespace
}  // namespace vpn
