#include "tests/panel/behaviour.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <memory>
#include <thread>

namespace panel {
namespace {

constexpr char kPage[] =
    "<!DOCTYPE html>\n<html><head><title>Welcome</title></head>\n<body>It works.</body></html>\n";

// What a rule is carried out with.
struct Scene {
  const Json& rule;
  const std::function<Reply()>& ordinary;
  const std::function<bool()>& stopped;
  Connection& connection;
  httplib::Response& response;
};

void Answer(const Scene& scene, const std::string& body, const std::string& type) {
  scene.response.status = scene.rule.value("status", 200);
  scene.response.set_content(body, type);
}

void AnswerAsTold(const Scene& scene) {
  Answer(scene, scene.rule.value("body", ""), scene.rule.value("type", "application/json"));
}

void AnswerWithPage(const Scene& scene) {
  Answer(scene, kPage, "text/html; charset=UTF-8");
}

void AnswerAtLength(const Scene& scene) {
  const auto piece = scene.rule.value("body", "x");
  const auto size = scene.rule.value("size", std::size_t{0});
  std::string body;
  body.reserve(size + piece.size());
  while (body.size() < size) body += piece;
  body.resize(size);
  Answer(scene, body, scene.rule.value("type", "application/json"));
}

void Redirect(const Scene& scene) {
  scene.response.set_header("Location", scene.rule.at("location").get<std::string>());
  scene.response.status = scene.rule.value("status", 302);
  scene.response.set_content(scene.rule.value("body", ""), "text/html");
}

void AnswerInChunks(const Scene& scene) {
  const auto reply = std::make_shared<Reply>(scene.ordinary());
  const auto piece = scene.rule.value("piece", std::size_t{7});
  scene.response.status = reply->status;
  scene.response.set_chunked_content_provider(
      reply->type, [reply, piece](std::size_t offset, httplib::DataSink& sink) {
        const std::string next = reply->body.substr(std::min(offset, reply->body.size()), piece);
        if (next.empty()) {
          sink.done();
          return true;
        }
        return sink.write(next.data(), next.size());
      });
}

// A reset takes back what the client's system has not yet handed on, so it waits until that is
// done.
// A reset takes back what the client's system has not yet handed on, and may come while the client
// is still sending. So it waits until both is surely over, and the client waits for an answer.
void AwaitQuiet() {
  std::this_thread::sleep_for(std::chrono::seconds(1));
}

// The header lines of the whole answer, and half of its body.
void SendHalf(const Scene& scene) {
  const Reply reply = scene.ordinary();
  scene.connection.Send("HTTP/1.1 " + std::to_string(reply.status) + " OK\r\nContent-Type: " +
                        reply.type + "\r\nContent-Length: " + std::to_string(reply.body.size()) +
                        "\r\n\r\n" + reply.body.substr(0, reply.body.size() / 2));
}

void Hang(const Scene& scene) {
  scene.connection.AwaitClose(scene.stopped);
  scene.connection.Finish();
}

void HangInBody(const Scene& scene) {
  SendHalf(scene);
  Hang(scene);
}

void Cut(const Scene& scene) {
  SendHalf(scene);
  scene.connection.Finish();
}

void ResetInBody(const Scene& scene) {
  SendHalf(scene);
  AwaitQuiet();
  scene.connection.FinishWithReset();
}

void Reset(const Scene& scene) {
  AwaitQuiet();
  scene.connection.FinishWithReset();
}

void Close(const Scene& scene) {
  scene.connection.Finish();
}

void SendGarbage(const Scene& scene) {
  scene.connection.Send("SSH-2.0-OpenSSH_9.2\r\n\x01\x02\x03 this is another protocol\r\n\r\n");
  scene.connection.Finish();
}

const std::map<std::string, void (*)(const Scene&)> kDeeds = {{"answer", AnswerAsTold},
                                                              {"html", AnswerWithPage},
                                                              {"repeat", AnswerAtLength},
                                                              {"redirect", Redirect},
                                                              {"chunked", AnswerInChunks},
                                                              {"hang", Hang},
                                                              {"hang-in-body", HangInBody},
                                                              {"cut", Cut},
                                                              {"reset-in-body", ResetInBody},
                                                              {"reset", Reset},
                                                              {"close", Close},
                                                              {"garbage", SendGarbage}};

}  // namespace

// A rule that can't be carried out is refused here, where the test sees it.
void Behaviours::Add(Json rule) {
  (void)kDeeds.at(rule.at("do").get<std::string>());
  (void)rule.at("path").get<std::string>();
  const std::lock_guard<std::mutex> lock(mutex_);
  rules_.push_back(std::move(rule));
}

void Behaviours::Clear() {
  const std::lock_guard<std::mutex> lock(mutex_);
  rules_.clear();
}

std::optional<Json> Behaviours::Take(const std::string& path) {
  const std::lock_guard<std::mutex> lock(mutex_);
  for (Json& rule : rules_) {
    if (rule["path"] != "*" && rule["path"] != path) continue;
    if (!rule.contains("times")) return rule;
    const int left = rule["times"];
    if (left <= 0) continue;
    rule["times"] = left - 1;
    return rule;
  }
  return std::nullopt;
}

void Misbehave(const Json& rule, const std::function<Reply()>& ordinary,
               const std::function<bool()>& stopped, Connection& connection,
               httplib::Response& response) {
  kDeeds.at(rule.at("do").get<std::string>())({rule, ordinary, stopped, connection, response});
}

}  // namespace panel
