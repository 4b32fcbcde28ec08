// Panel answers of any size.
#ifndef TAVRIN_TESTS_BENCH_BODIES_H_
#define TAVRIN_TESTS_BENCH_BODIES_H_

#include <string>

namespace bench {

// A list of plans, of `size` bytes or a little more.
inline std::string PlanList(size_t size) {
  std::string body = R"({"status":"success","message":"\u64cd\u4f5c\u6210\u529f","data":[)";
  for (int id = 1; body.size() < size; ++id) {
    body += (id > 1 ? "," : "") + std::string(R"({"id":)") + std::to_string(id) +
            R"(,"group_id":1,"name":"\u6807\u51c6\u7248","tags":null,"content":"<p>100 GB<\/p>",)"
            R"("month_price":1990,"year_price":19900,"transfer_enable":100,"device_limit":3})";
  }
  return body + R"(],"error":null})";
}

// One value of `size` bytes, every tenth byte of which belongs to an escape.
inline std::string LongText(size_t size) {
  std::string body = R"({"data":{"content":")";
  while (body.size() < size) {
    body += R"(text \u4e2d and \/ more text )";
  }
  return body + R"(","id":7}})";
}

}  // namespace bench

#endif  // TAVRIN_TESTS_BENCH_BODIES_H_
