// A blocking TCP connection to the loopback address for tests. A server that stays silent for 60 seconds fails the read
// instead of hanging the test.
#pragma once

#include <cstdint>
#include <string>

namespace sandboxtest {

class Socket {
 public:
  /// Connects to 127.0.0.1; Connected tells whether that worked.
  explicit Socket(std::uint16_t port);
  ~Socket();
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;

  bool Connected() const { return handle >= 0; }

  /// Sends all bytes; false when the other side has gone.
  bool Send(const std::string& bytes);

  /// Has the system take in as little as it can beyond what is read.
  void TakeLittle();

  /// Tells the other side that nothing more comes.
  void EndSending();

  /// Waits at most that many milliseconds for something to read, and tells whether there is.
  bool AnswersWithin(int milliseconds);

  /// Reads until the other side ends. `orderly` becomes false when it ended by a reset or kept silent.
  std::string ReadToEnd(bool& orderly);

  /// Tells whether the last ReadToEnd was given up because the server neither sent nor ended.
  bool Silent() const { return silent; }

  /// Has the system take in as little as it can beyond what the other side takes.
  void SendLittleAhead();

 private:
  int handle;
  bool silent = false;
};

}  // namespace sandboxtest
