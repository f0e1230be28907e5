// The measure of planservice-load.sh: the HTTP library alone, answering every request with the same bytes.

#include <restinio/all.hpp>

#include <cstdlib>
#include <iostream>
#include <string>
#include <thread>

namespace {

struct Traits : restinio::traits_t<restinio::asio_timer_manager_t, restinio::null_logger_t>
{
};

} // namespace

/// constant_server BYTES: listens on a free loopback port, which it prints, until it is killed.
int main(int argc, char** argv)
{
    const long size = argc == 2 ? std::atol(argv[1]) : 0;
    if (size <= 0) {
        std::cerr << "usage: constant_server BYTES\n";
        return 2;
    }
    const auto body = std::make_shared<std::string>(static_cast<std::size_t>(size), 'x');
    asio::io_context context;
    restinio::http_server_t<Traits> server(restinio::external_io_context(context), [&](auto& settings) {
        settings.address("127.0.0.1")
            .port(0)
            .socket_options_setter([](restinio::socket_options_t& options) {
                options.set_option(asio::ip::tcp::no_delay(true));
            })
            .acceptor_post_bind_hook([](asio::ip::tcp::acceptor& acceptor) {
                std::cout << "http://127.0.0.1:" << acceptor.local_endpoint().port() << "/" << std::endl;
            })
            .request_handler([body](const restinio::request_handle_t& request) {
                return request->create_response()
                    .append_header(restinio::http_field::content_type, "application/json; charset=utf-8")
                    .append_header_date_field()
                    .set_body(body)
                    .done();
            });
    });
    server.open_sync();
    // As many threads as planservice has for HTTP.
    std::thread second([&] { context.run(); });
    context.run();
    second.join();
    return 0;
}
