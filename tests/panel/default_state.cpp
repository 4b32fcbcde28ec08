#include "tests/panel/default_state.h"

namespace panel {
namespace {

constexpr char kSettings[] = R"({
  "family": "xboard",
  "quotedNumbers": false,
  "registerSignsIn": true,
  "subscriptionToken": true,
  "subscribeUrl": "https://sub.panel.example/s/",
  "noticeNodes": false,
  "wholeServerRows": false,
  "orderNumberInObject": false,
  "checkoutNeedsMethod": true,
  "checkoutType": 1,
  "checkoutData": "https://pay.panel.example/submit.php?pid=7&type=alipay",
  "config": {"is_email_verify": 0, "is_invite_force": 0, "is_recaptcha": 0},
  "mailCodes": {},
  "loginFailures": {},
  "orders": [],
  "drawn": 0
})";

constexpr char kUsers[] = R"([
  {"id": 1, "email": "user@tavrin.example", "password": "p+ss &wörd 密",
   "token": "0f1e2d3c4b5a69788796a5b4c3d2e1f0",
   "sessions": ["Bearer 7QzKcXw1mUe5RtYh8JpLs2Vb9NdFg3Aa6Co4Ei0Uk7Wx5Zq8"],
   "uuid": "7b1f6c0e-3a52-4d6b-9a53-6a1f9d3a2c11", "banned": false, "plan_id": 2,
   "expired_at": 4102329600, "u": 1073741824, "d": 9663676416, "transfer_enable": 214748364800,
   "device_limit": null, "speed_limit": null, "next_reset_at": 4080000000, "balance": 1250,
   "codes": [], "inviteStat": [3, 1250, 70.5, 10, 480], "referrals": [], "devices": []}
])";

// What a registration makes, but for the name and what is drawn.
constexpr char kNewUser[] = R"(
  {"id": 0, "email": "", "password": "", "token": "", "sessions": [], "uuid": "", "banned": false,
   "plan_id": null, "expired_at": 0, "u": 0, "d": 0, "transfer_enable": 0, "device_limit": null,
   "speed_limit": null, "next_reset_at": null, "balance": 0, "codes": [],
   "inviteStat": [0, 0, 0, 10, 0], "referrals": [], "devices": []}
)";

constexpr char kPlans[] = R"([
  {"id": 1, "group_id": 1, "name": "体验版", "tags": null,
   "content": "[{\"feature\":\"10 GB / 月\",\"support\":true}]",
   "month_price": 0, "quarter_price": null, "half_year_price": null, "year_price": null,
   "two_year_price": null, "three_year_price": null, "onetime_price": null, "reset_price": null,
   "transfer_enable": 10, "speed_limit": null, "device_limit": 1, "capacity_limit": null,
   "show": true, "sell": true, "renew": true, "reset_traffic_method": null, "sort": 1,
   "created_at": 1700000000, "updated_at": 1700000000},
  {"id": 2, "group_id": 1, "name": "标准版", "tags": ["热卖"],
   "content": "<p>所有线路 &amp; \"不限速\"</p>",
   "month_price": 1989.9999999999998, "quarter_price": 5500, "half_year_price": null,
   "year_price": 12000, "two_year_price": null, "three_year_price": null, "onetime_price": null,
   "reset_price": 500, "transfer_enable": 200, "speed_limit": null, "device_limit": 3,
   "capacity_limit": null, "show": true, "sell": true, "renew": true,
   "reset_traffic_method": null, "sort": 2, "created_at": 1700000000, "updated_at": 1700000000},
  {"id": 3, "group_id": 1, "name": "流量包", "tags": null, "content": "用完为止",
   "month_price": null, "quarter_price": null, "half_year_price": null, "year_price": null,
   "two_year_price": null, "three_year_price": null, "onetime_price": 9900, "reset_price": null,
   "transfer_enable": 500, "speed_limit": 300, "device_limit": null, "capacity_limit": 100,
   "show": true, "sell": true, "renew": false, "reset_traffic_method": 2, "sort": 3,
   "created_at": 1700000000, "updated_at": 1700000000}
])";

constexpr char kNodes[] = R"([
  {"id": 11, "name": "东京 01", "type": "vless", "host": "203.0.113.9", "port": 443,
   "flow": "xtls-rprx-vision", "server_name": "www.tokyo.example", "fingerprint": "chrome",
   "public_key": "Zm9yLXRlc3RzLW9ubHktbm90LWEtcmVhbC1rZXktISE", "short_id": "0123456789abcdef"},
  {"id": 12, "name": "香港 02 | 中转", "type": "vless", "host": "203.0.113.20", "port": 8443,
   "flow": "xtls-rprx-vision", "server_name": "www.hongkong.example", "fingerprint": "firefox",
   "public_key": "YW5vdGhlci10ZXN0LWtleS1ub3QtcmVhbC1laXRoZXI", "short_id": "a1b2"},
  {"id": 13, "name": "新加坡 03", "type": "vless", "host": "203.0.113.30", "port": 443,
   "flow": null, "server_name": "www.singapore.example", "fingerprint": "safari",
   "public_key": "dGhlLXRoaXJkLXRlc3Qta2V5LWlzLW5vdC1yZWFsLS0", "short_id": null}
])";

constexpr char kPaymentMethods[] = R"([
  {"id": 7, "name": "支付宝", "payment": "AlipayF2F", "icon": null,
   "handling_fee_fixed": null, "handling_fee_percent": "0.60"},
  {"id": 9, "name": "USDT", "payment": "TokenPay", "icon": "https://cdn.panel.example/usdt.svg",
   "handling_fee_fixed": 100, "handling_fee_percent": null}
])";

}  // namespace

Json DefaultState() {
  Json state = Json::parse(kSettings);
  state["users"] = Json::parse(kUsers);
  state["newUser"] = Json::parse(kNewUser);
  state["plans"] = Json::parse(kPlans);
  state["nodes"] = Json::parse(kNodes);
  state["paymentMethods"] = Json::parse(kPaymentMethods);
  return state;
}

}  // namespace panel
