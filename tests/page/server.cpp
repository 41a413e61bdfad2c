// The server of the page: who is let in, what is streamed, and what others cannot do to it.

#include "page/Server.h"

#include <sys/resource.h>

#include <algorithm>
#include <fstream>

#include "http.h"

namespace {

using vorn_speaker::Reply;
using vorn_speaker::Server;
using vorn_speaker::Stream;

Reply hello(const std::string& method, const std::string& path, const std::string& body) {
  return {200, "text/plain", method + " " + path + " " + body};
}

TEST(AStream, GivesEveryLineOnceAndInOrder) {
  Stream stream(1000);
  stream.push("{1}");
  stream.push("{2}");
  std::uint64_t place = 0;
  std::string out;
  EXPECT_TRUE(stream.read(place, 1000, "", out));
  EXPECT_FALSE(stream.read(place, 1000, "", out));
  EXPECT_EQ(out, "{1}\n{2}\n");
}

/// All that a reader who is at a place is given, and where it is then.
std::string given(const Stream& stream, std::uint64_t place, std::size_t most = 1000) {
  std::string out;
  const bool more = stream.read(place, most, "", out);
  return out + (more ? "@" : "none@") + std::to_string(place);
}

TEST(AStream, GivesWhatIsBehindAPlace) {
  Stream stream(1000);
  EXPECT_EQ(given(stream, 0).substr(0, 5), "none@");
  stream.push("{1}");
  const std::uint64_t first = std::stoull(given(stream, 0).substr(5)) - 1;
  stream.push("{2}");
  stream.push("{3}");
  const auto at = [&](std::uint64_t more) { return "@" + std::to_string(first + more); };
  EXPECT_EQ(given(stream, first), "{1}\n{2}\n{3}\n" + at(3));
  EXPECT_EQ(given(stream, first + 2), "{3}\n" + at(3));
  EXPECT_EQ(given(stream, first + 3), "none" + at(3));
  EXPECT_EQ(given(stream, first + 4), "{1}\n{2}\n{3}\n" + at(3)) << "a place of another's";
  EXPECT_EQ(given(stream, first, 1), "{1}\n" + at(1));
  EXPECT_EQ(given(stream, first, 4), "{1}\n" + at(1));
  EXPECT_EQ(given(stream, first, 5), "{1}\n{2}\n" + at(2));
  std::string out = "before ";
  std::uint64_t place = first + 2;
  stream.read(place, 100, "data: ", out);
  EXPECT_EQ(out, "before data: {3}\n");
}

TEST(AStream, KeepsAsManyBytesAsItMayAndTheLastLine) {
  Stream stream(10);
  stream.push("{1234567}");
  stream.push("x");
  EXPECT_EQ(given(stream, 0), "{1234567}\nx\n@3");
  stream.push("y");
  EXPECT_EQ(given(stream, 0), "{\"missed\":1}\nx\ny\n@4");
  stream.push("{this is longer than all that is kept}");
  EXPECT_EQ(given(stream, 0), "{\"missed\":3}\n{this is longer than all that is kept}\n@5");
}

TEST(AStream, TellsASlowReaderHowManyLinesItMissed) {
  Stream stream(10);
  for (int i = 0; i < 5; ++i) stream.push("{12345}");
  std::uint64_t place = 0;
  std::string out;
  stream.read(place, 1000, "", out);
  EXPECT_EQ(out, "{\"missed\":4}\n{12345}\n");
}

TEST(AStream, GivesTheLastCallOfEachOperationThatIsGone) {
  Stream stream(60);
  for (const char* volume : {"10", "20", "30"})
    stream.push(R"({"adapter":"A","operation":"get","result":")" + std::string(volume) + "\"}");
  std::uint64_t place = 0;
  std::string out;
  stream.read(place, 1000, "", out);
  EXPECT_EQ(out.substr(0, out.find('\n')), R"({"earlier":{"adapter":"A","operation":"get","result":"20"}})");
}

TEST(AStream, TellsCallsThatAreGoneByAdapterAndOperation) {
  Stream stream(1);
  const auto call = [&](const std::string& adapter, const std::string& operation, int result) {
    stream.push("{\"adapter\":\"" + adapter + "\",\"operation\":\"" + operation +
                "\",\"r\":" + std::to_string(result) + "}");
  };
  call("A", "get", 1);
  call("B", "get", 2);
  call("A", "set", 3);
  stream.push(R"({"adapter":"A"})");
  stream.push(R"({"operation":"get"})");
  call("A", "get", 4);
  call("AB", "get", 5);
  call("A", "Bget", 6);
  stream.push("last");
  std::string earlier;
  for (const char* const gone :
       {R"("A","operation":"Bget","r":6)", R"("A","operation":"get","r":4)", R"("A","operation":"set","r":3)",
        R"("AB","operation":"get","r":5)", R"("B","operation":"get","r":2)"})
    earlier += std::string(R"({"earlier":{"adapter":)") + gone + "}}\n";
  EXPECT_EQ(given(stream, 0), earlier + "{\"missed\":8}\nlast\n@10");
}

TEST(AStream, RemembersFiveHundredOperations) {
  Stream stream(1);
  for (int i = 0; i < 600; ++i)
    stream.push("{\"adapter\":\"A\",\"operation\":\"o" + std::to_string(i) + "\"}");
  stream.push(R"({"adapter":"A","operation":"o7","again":1})");
  stream.push("last");
  const std::string all = given(stream, 0);
  std::size_t earlier = 0;
  for (std::size_t at = 0; (at = all.find("earlier", at)) != all.npos; ++at) ++earlier;
  EXPECT_EQ(earlier, 500U);
  EXPECT_TRUE(has(all, "\"again\""));
}

TEST(AStream, TellsWhoeverWaits) {
  Stream stream(10);
  int told = 0;
  stream.onLine([&] { ++told; });
  stream.push("1");
  stream.push("2");
  stream.onLine(nullptr);
  stream.push("3");
  EXPECT_EQ(told, 2);
}

TEST(AStream, BeginsAnewForWhoeverReadBefore) {
  Stream stream(1000);
  stream.push("{1}");
  std::uint64_t place = 0;
  std::string out;
  stream.read(place, 1000, "", out);
  stream.restart();
  stream.push("{2}");
  stream.read(place, 1000, "", out);
  EXPECT_EQ(out, "{1}\n{2}\n");
}

TEST(AStream, ForgetsEverythingWhenItBeginsAnew) {
  Stream stream(60);
  stream.push(R"({"adapter":"A","operation":"get","result":"of before"})");
  stream.push(R"({"adapter":"A","operation":"set"})");
  stream.restart();
  EXPECT_EQ(given(stream, 0).substr(0, 5), "none@");
  stream.push("{" + std::string(56, 'x') + "}");
  stream.push("{}");
  EXPECT_EQ(given(stream, 1), "{" + std::string(56, 'x') + "}\n{}\n@5");
  stream.push("{}");
  EXPECT_EQ(given(stream, 1), "{\"missed\":1}\n{}\n{}\n@6");
}

class AServer : public testing::Test {
 protected:
  Stream m_stream{std::size_t{1} << 20};
  Server m_server{0, m_stream, hello};
  const Address m_address{m_server.address()};
};

TEST_F(AServer, AnswersWhoeverKnowsTheToken) {
  EXPECT_TRUE(has(get(m_address, "here"), "\r\n\r\nGET here "));
  EXPECT_TRUE(has(post(m_address, "there", "a body"), "POST there a body"));
}

TEST_F(AServer, RefusesAWrongTokenOrNone) {
  std::string wrong = m_address.path;
  wrong[1] = wrong[1] == '0' ? '1' : '0';
  const std::string bare = m_address.path.substr(0, m_address.path.size() - 1);
  for (const std::string& path :
       {wrong, std::string("/"), m_address.path.substr(0, 20) + "/", "/" + m_address.path, bare, bare + "0/"})
    EXPECT_TRUE(has(ask(m_address, request(m_address, "GET", path)), "HTTP/1.1 403")) << path;
}

TEST_F(AServer, RefusesAForeignHost) {
  const std::string text = "GET " + m_address.path + " HTTP/1.1\r\nConnection: close\r\n";
  for (const std::string host : {"Host: page.example\r\n", "Host: 127.0.0.1\r\n", ""})
    EXPECT_TRUE(has(ask(m_address, text + host + "\r\n"), "HTTP/1.1 40")) << host;
}

TEST_F(AServer, RefusesAForeignOrigin) {
  for (const std::string origin : {"http://page.example", "null", "http://127.0.0.1", "https://127.0.0.1"})
    EXPECT_TRUE(has(get(m_address, "", "Origin: " + origin + "\r\n"), "HTTP/1.1 403")) << origin;
  EXPECT_TRUE(has(get(m_address, "", "Origin: http://" + m_address.host() + "\r\n"), "HTTP/1.1 200"));
}

TEST_F(AServer, IsKnownByBothNamesOfThisMachine) {
  const std::string local = "localhost:" + std::to_string(m_address.port);
  const std::string begin = "GET " + m_address.path + " HTTP/1.1\r\nConnection: close\r\n";
  EXPECT_TRUE(has(ask(m_address, begin + "Host: " + local + "\r\n\r\n"), "HTTP/1.1 200"));
  EXPECT_TRUE(has(get(m_address, "", "Origin: http://" + local + "\r\n"), "HTTP/1.1 200"));
}

TEST_F(AServer, RefusesOtherMethods) {
  for (const char* const method : {"PUT", "DELETE", "OPTIONS"})
    EXPECT_TRUE(has(ask(m_address, request(m_address, method, m_address.path)), "HTTP/1.1 405")) << method;
}

TEST_F(AServer, ForbidsWithEveryAnswerWhatAPageMayNotDo) {
  const std::string headers[] = {
      "Content-Security-Policy: default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; "
      "connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'",
      "X-Content-Type-Options: nosniff",
      "Cross-Origin-Resource-Policy: same-origin",
      "Cross-Origin-Opener-Policy: same-origin",
      "Referrer-Policy: no-referrer",
      "Cache-Control: no-store"};
  const std::string answer = get(m_address, "");
  for (const std::string& header : headers) EXPECT_TRUE(has(answer, "\r\n" + header + "\r\n")) << header;
  const std::string stream = events(m_address, [](const std::string& all) { return has(all, ": here\n\n"); });
  for (const std::string& header : headers) EXPECT_TRUE(has(stream, "\r\n" + header + "\r\n")) << header;
  EXPECT_TRUE(has(stream, "\r\nContent-Type: text/event-stream\r\n"));
}

TEST_F(AServer, ListensOnLoopbackAlone) { EXPECT_FALSE(Connection(m_address.port, "127.0.0.2").connected()); }

TEST_F(AServer, HasAnotherTokenEachTime) {
  const Server other(0, m_stream, hello);
  EXPECT_NE(Address(other.address()).path, m_address.path);
}

TEST_F(AServer, TellsThatAPortIsTaken) {
  try {
    const Server other(m_address.port, m_stream, hello);
    FAIL() << "it was not";
  } catch (const std::runtime_error& error) {
    EXPECT_EQ(error.what(),
              "port " + std::to_string(m_address.port) +
                  " of 127.0.0.1: Address already in use; name another with --port, or none for a free one");
  }
}

TEST(AServersConnections, MayEachHaveAFile) {
  rlimit before{};
  getrlimit(RLIMIT_NOFILE, &before);
  const rlimit few{256, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
  Stream stream(1000);
  const Server server(0, stream, hello);
  rlimit now{};
  getrlimit(RLIMIT_NOFILE, &now);
  setrlimit(RLIMIT_NOFILE, &before);
  EXPECT_EQ(now.rlim_cur, std::min<rlim_t>(4096, before.rlim_max));
}

TEST(AServersPort, CanBeTakenAgainAtOnce) {
  Stream stream(1000);
  auto server = std::make_unique<Server>(0, stream, hello);
  const Address address(server->address());
  EXPECT_TRUE(has(get(address, ""), "HTTP/1.1 200"));  // closed by the server, and so kept by the system
  server.reset();
  EXPECT_NO_THROW(Server(address.port, stream, hello));
}

TEST_F(AServer, TakesABodyOfAMebibyte) {
  EXPECT_TRUE(has(post(m_address, "", std::string(Server::kMostBody, 'x')), "HTTP/1.1 200"));
}

TEST_F(AServer, RefusesABodyThatIsTooLarge) {
  EXPECT_TRUE(has(post(m_address, "", std::string(Server::kMostBody + 1, 'x')), "HTTP/1.1 413"));
}

TEST_F(AServer, ClosesWhereABodyInPartsIsTooLarge) {
  const Connection connection(m_address.port);
  connection.send("POST " + m_address.path + " HTTP/1.1\r\nHost: " + m_address.host() +
                  "\r\nTransfer-Encoding: chunked\r\n\r\n");
  for (int i = 0; i < 40; ++i) connection.send("8000\r\n" + std::string(0x8000, 'x') + "\r\n");
  connection.send("0\r\n\r\n");
  EXPECT_FALSE(has(connection.read([](const std::string&) { return false; }), "HTTP/1.1 200"));
}

TEST_F(AServer, StreamsToWhoeverGetsAndNotToWhoeverPosts) {
  EXPECT_TRUE(has(post(m_address, "events", "x"), "POST events x"));
}

TEST_F(AServer, StreamsALineWhenItComes) {
  const Connection connection(m_address.port);
  connection.send(request(m_address, "GET", m_address.path + "events"));
  connection.read([](const std::string& all) { return has(all, ": here"); });
  const auto began = std::chrono::steady_clock::now();
  for (int i = 0; i < 20; ++i) {
    const std::string line = "{" + std::to_string(i) + "}\n";
    m_stream.push(line.substr(0, line.size() - 1));
    EXPECT_TRUE(has(connection.read([&](const std::string& all) { return has(all, "\n\n"); }), line));
  }
  EXPECT_LT(std::chrono::steady_clock::now() - began, kBound) << "lines waited for a sign of life";
}

TEST_F(AServer, StreamsWhatWasAndWhatComes) {
  m_stream.push("{1}");
  const Connection connection(m_address.port);
  connection.send(request(m_address, "GET", m_address.path + "events"));
  EXPECT_TRUE(
      has(connection.read([](const std::string& all) { return has(all, "data: {1}\nid: 2"); }), "{1}"));
  m_stream.push("{2}");
  EXPECT_TRUE(has(connection.read([](const std::string& all) { return has(all, "{2}"); }), "data: {2}"));
}

TEST_F(AServer, GoesOnWhereAPageWasCutOff) {
  m_stream.push("{1}");
  m_stream.push("{2}");
  const std::string all = events(
      m_address, [](const std::string& told) { return has(told, "{2}"); }, "Last-Event-ID: 2\r\n");
  EXPECT_TRUE(has(all, "{2}"));
  EXPECT_FALSE(has(all, "{1}"));
}

TEST_F(AServer, EndsWhilePagesListen) {
  auto server = std::make_unique<Server>(0, m_stream, hello);
  const Address address(server->address());
  const Connection connection(address.port);
  connection.send(request(address, "GET", address.path + "events"));
  connection.read([](const std::string& all) { return has(all, ": here"); });
  server.reset();
  EXPECT_EQ(connection.read([](const std::string&) { return false; }).find("data:"), std::string::npos);
}

long residentKilobytes() {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    if (word == "VmRSS:") break;
  }
  long kilobytes = 0;
  status >> kilobytes;
  return kilobytes;
}

TEST_F(AServer, IsNotHinderedByAThousandSlowAndBrokenClients) {
  [[maybe_unused]] const long before = residentKilobytes();
  const std::string listen = request(m_address, "GET", m_address.path + "events");
  const std::string broken[] = {"GET ", "\x16\x03\x01\x02",
                                "POST " + m_address.path + " HTTP/1.1\r\nContent-Le",
                                "GET / HTTP/1.1\r\n" + std::string(60000, 'a'), listen};
  std::vector<Connection> clients;
  for (std::size_t i = 0; i < 1000; ++i) {
    clients.emplace_back(m_address.port);
    clients.back().send(broken[i % 5]);
  }
  const std::string line = "{\"text\":\"" + std::string(1000, 'x') + "\"}";
  for (int i = 0; i < 20000; ++i) m_stream.push(line);
  m_stream.push("{\"last\":1}");
  EXPECT_TRUE(has(get(m_address, "here"), "GET here"));
  EXPECT_TRUE(
      has(events(m_address, [](const std::string& all) { return has(all, "\"last\""); }), "\"missed\""));
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  std::cout << "memory is not looked at: a sanitizer keeps what was given back\n";
#else
  EXPECT_LT(residentKilobytes() - before, 100 << 10);
#endif
}

}  // namespace
