#include "listening.h"

#include <stdexcept>

namespace sandbox {

void ListenOn(boost::asio::ip::tcp::acceptor& acceptor, const std::string& address, std::uint16_t port) {
  using Tcp = boost::asio::ip::tcp;
  try {
    const Tcp::endpoint endpoint(boost::asio::ip::make_address(address), port);
    acceptor.open(endpoint.protocol());
    acceptor.set_option(Tcp::acceptor::reuse_address(true));
    acceptor.bind(endpoint);
    acceptor.listen();
  } catch (const boost::system::system_error& error) {
    throw std::runtime_error("cannot listen on address " + address + ", port " + std::to_string(port) + ": " +
                             error.code().message());
  }
}

}  // namespace sandbox
