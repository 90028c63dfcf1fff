#include "net/HttpReader.h"

#include <boost/asio/buffer.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>

namespace cloudsim {
namespace {

namespace http = boost::beast::http;

constexpr std::size_t maximumBodyBytes = 64 * 1024 * 1024;
constexpr std::size_t maximumHeadBytes = 64 * 1024;

HttpRequest converted(http::request<http::string_body>&& message) {
    HttpRequest request;
    request.method = std::string(message.method_string());
    request.target = std::string(message.target());
    request.keepAlive = message.keep_alive();
    for (const auto& field : message)
        request.headers.emplace_back(std::string(field.name_string()), std::string(field.value()));
    request.body = std::move(message.body());
    return request;
}

} // namespace

HttpReader::Result HttpReader::next(HttpRequest& request, std::chrono::milliseconds idleTimeout) {
    http::request_parser<http::string_body> parser;
    parser.eager(true);
    parser.body_limit(maximumBodyBytes);
    parser.header_limit(maximumHeadBytes);
    while (true) {
        while (!m_buffer.empty()) {
            boost::system::error_code error;
            auto used = parser.put(boost::asio::buffer(m_buffer), error);
            m_buffer.erase(0, used);
            if (error == http::error::need_more)
                break;
            if (error)
                return Result::MALFORMED;
            if (parser.is_done())
                break;
            if (used == 0)
                break;
        }
        if (parser.is_done()) {
            request = converted(parser.release());
            return Result::REQUEST;
        }
        char bytes[16 * 1024];
        std::size_t count = 0;
        if (!m_connection.read(bytes, sizeof bytes, count, idleTimeout))
            return Result::END;
        m_buffer.append(bytes, count);
    }
}

} // namespace cloudsim
