// kest: a host on the command line, for developers and scripts.
#include <CLI/CLI.hpp>
#include <iostream>

#include "exit_codes.h"
#include "products.h"

namespace {

void AddProducts(CLI::App& app, kest_host::ProductsOptions& options) {
  CLI::App* command = app.add_subcommand("products", "Fetch the product list and show it");
  command->add_option("--server", options.server, "Commerce server: host name or dotted address")->required();
  command->add_option("--port", options.port, "Its TCP port")->capture_default_str();
  command->add_option("--key", options.keyFile, "File with the server's public key text")->required();
  command->add_option("--guid", options.guid, "GUID of the application");
  command->add_option("--version-id", options.versionId, "Version of the application that asks");
  command->add_option("--proxy", options.proxy, "HTTP proxy: HOST or HOST:PORT");
  command->add_option("--library", options.library, "The library to load instead of the one beside the program");
  command->add_flag("--json", options.json, "Print JSON instead of a table");
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("kest: talks to a commerce server through the KESTAPI library", "kest");
  app.require_subcommand(1);
  app.footer("Exit codes: 0 done, 1 failed on this machine, 2 usage, 3 no valid answer from the server,\n"
             "4 refused by the server.");
  kest_host::ProductsOptions products;
  AddProducts(app, products);
  try {
    app.parse(argc, argv);
    return kest_host::RunProducts(products);
  } catch (const CLI::Success& request) {
    return app.exit(request);
  } catch (const CLI::ParseError& error) {
    app.exit(error, std::cerr, std::cerr);
    return kest_host::exitUsage;
  } catch (const std::exception& error) {
    std::cerr << "kest: " << error.what() << '\n';
    return kest_host::exitFailed;
  }
}
