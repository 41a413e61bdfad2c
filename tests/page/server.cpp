// The server of the page: who is let in, what is streamed, and what others cannot do to it.

#include "page/Server.h"

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
  for (const std::string& path : {wrong, std::string("/"), m_address.path.substr(0, 20) + "/",
                                  "/" + m_address.path, m_address.path.substr(0, m_address.path.size() - 1)})
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

TEST_F(AServer, ForbidsInlineCodeAndOtherSources) {
  const std::string answer = get(m_address, "");
  EXPECT_TRUE(has(answer, "Content-Security-Policy: default-src 'none'; script-src 'self';"));
  EXPECT_FALSE(has(answer, "unsafe"));
  EXPECT_TRUE(has(answer, "X-Content-Type-Options: nosniff"));
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

TEST_F(AServer, RefusesABodyThatIsTooLarge) {
  EXPECT_TRUE(has(post(m_address, "", std::string(Server::kMostBody + 1, 'x')), "HTTP/1.1 413"));
}

TEST_F(AServer, ClosesWhereABodyInPartsIsTooLarge) {
  const Connection connection(m_address.port);
  connection.send("POST " + m_address.path + " HTTP/1.1\r\nHost: " + m_address.host() +
                  "\r\nTransfer-Encoding: chunked\r\n\r\n");
  for (int i = 0; i < 40; ++i) connection.send("8000\r\n" + std::string(0x8000, 'x') + "\r\n");
  EXPECT_FALSE(has(connection.read([](const std::string&) { return false; }), "HTTP/1.1 200"));
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
