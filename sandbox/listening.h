// Opens a listening socket. Included by the files of the servers alone, because Asio is slow to compile.
#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <cstdint>
#include <string>

namespace sandbox {

/// Makes the acceptor listen on a numeric address; port 0 takes a free one. Throws std::runtime_error with the reason
/// in words.
void ListenOn(boost::asio::ip::tcp::acceptor& acceptor, const std::string& address, std::uint16_t port);

}  // namespace sandbox
