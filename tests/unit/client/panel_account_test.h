// The base of the tests of commands that ask a panel: one at https://panel.example with a device
// service beside it, and somebody who is signed in.
#ifndef TAVRIN_TESTS_UNIT_CLIENT_PANEL_ACCOUNT_TEST_H_
#define TAVRIN_TESTS_UNIT_CLIENT_PANEL_ACCOUNT_TEST_H_

#include <string>

#include "tests/unit/client/client_test.h"

namespace unit {

inline constexpr char kOldSession[] =
    "{\"email\":\"old@mail.example\",\"auth_data\":\"Bearer OLD\"}\n";
inline constexpr char kNewSession[] =
    "{\"email\":\"new@mail.example\",\"auth_data\":\"Bearer NEW\"}\n";
inline constexpr char kSignedIn[] =
    R"({"status":"success","data":{"token":"t0ken","auth_data":"Bearer NEW","is_admin":false}})";
inline constexpr char kSubscribe[] =
    R"({"status":"success","message":"操作成功","data":{"plan_id":2,"token":"0f1e","expired_at":4102329600,"u":1073741824,"d":9663676416,"transfer_enable":214748364800,"email":"new@mail.example","uuid":"7b1f","device_limit":null,"plan":{"id":2,"name":"标准版","device_limit":3}},"error":null})";
inline constexpr char kNoPlan[] =
    R"({"status":"success","data":{"plan_id":null,"token":"0f1e","expired_at":0,"u":0,"d":0,"transfer_enable":0,"email":"new@mail.example","uuid":"7b1f","plan":null}})";
inline constexpr char kLinks[] =
    "vless://7b1f@203.0.113.9:443?security=reality&pbk=KEY&sni=www.site.example#Tokyo";
inline constexpr char kPlans[] =
    R"({"status":"success","data":[{"id":1,"name":"体验版","month_price":0,"transfer_enable":10,"device_limit":1},{"id":2,"name":"标准版","month_price":1990,"quarter_price":5500,"year_price":null,"transfer_enable":200,"device_limit":3},{"id":3,"name":"流量包","onetime_price":9900,"transfer_enable":500,"device_limit":null}]})";

class PanelAccountTest : public ClientTest {
 protected:
  PanelAccountTest();

  void Get(const std::string& path, sim::HttpAnswer answer);
  void Post(const std::string& path, sim::HttpAnswer answer);
  // An account with a plan and a node, by whatever credential.
  void PutUser();
  std::string Session() const;
  // The session is the old one, and no draft lies beside it.
  void ExpectOldSession() const;
  // What a person types, a line for each question.
  void Type(const std::vector<std::wstring>& lines);
};

}  // namespace unit

#endif  // TAVRIN_TESTS_UNIT_CLIENT_PANEL_ACCOUNT_TEST_H_
