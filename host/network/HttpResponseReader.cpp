#include "network/HttpResponseReader.h"

#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/buffer_body.hpp>
#include <boost/beast/http/parser.hpp>

#include <algorithm>
#include <exception>
#include <optional>
#include <utility>

namespace http = boost::beast::http;
using boost::beast::error_code;

namespace {

constexpr std::uint32_t maximumHeaderBytes = 64 * 1024;
constexpr std::size_t inputBytes = 16 * 1024; ///< one TLS record

bool isInterim(int status) {
    return status >= 100 && status < 200 && status != 101;
}

} // namespace

struct HttpResponseReader::Representation {
    using Parser = http::response_parser<http::buffer_body>;

    void beginResponse() {
        parser.emplace();
        parser->header_limit(maximumHeaderBytes);
        parser->body_limit(maximumBodyBytes);
    }

    bool more(std::string& error);
    /// Feeds the parser with what there is, and with more as long as it wants more. False with the reason when the
    /// response is no good; full when the body's buffer has no room for the bytes that are there.
    bool feed(bool& full, std::string& error);

    Source source;
    std::size_t maximumBodyBytes = 0;
    boost::beast::flat_buffer input;
    bool ended = false;
    std::optional<Parser> parser;
};

bool HttpResponseReader::Representation::more(std::string& error) {
    std::size_t length = 0;
    const auto room = input.prepare(inputBytes);
    const Input result = source(static_cast<char*>(room.data()), room.size(), length, error);
    if (result == Input::FAILED) {
        return false;
    }
    input.commit(length);
    ended = result == Input::END;
    return true;
}

bool HttpResponseReader::Representation::feed(bool& full, std::string& error) {
    error_code result;
    if (input.size() > 0) {
        input.consume(parser->put(input.data(), result));
    } else {
        result = http::error::need_more;
    }
    full = result == http::error::need_buffer;
    if (full || !result) {
        return true;
    }
    if (result != http::error::need_more) {
        error = result.message();
        return false;
    }
    if (!ended) {
        return more(error);
    }
    // The end of the stream ends a body of no announced length, and cuts off any other response.
    result = {};
    if (parser->got_some()) {
        parser->put_eof(result);
    } else {
        result = http::error::end_of_stream;
    }
    if (result) {
        error = result.message();
    }
    return !result;
}

HttpResponseReader::HttpResponseReader(Source source, std::size_t maximumBodyBytes)
    : m_representation(std::make_unique<Representation>()) {
    m_representation->source = std::move(source);
    m_representation->maximumBodyBytes = maximumBodyBytes;
}

HttpResponseReader::~HttpResponseReader() = default;

bool HttpResponseReader::readHeader(std::string& error) try {
    Representation& my = *m_representation;
    do {
        my.beginResponse();
        bool full = false;
        while (!my.parser->is_header_done()) {
            if (!my.feed(full, error)) {
                return false;
            }
        }
    } while (isInterim(status()));
    return true;
} catch (const std::exception& failure) {
    error = failure.what();
    return false;
}

bool HttpResponseReader::readBody(std::string& part, std::size_t maximumLength, std::string& error) try {
    Representation& my = *m_representation;
    auto& body = my.parser->get().body();
    // The limit is far above most answers: room for what is announced, or for some and then for more.
    const auto announced = my.parser->content_length_remaining();
    part.resize(std::min<std::uint64_t>(maximumLength, announced.value_or(inputBytes)));
    body.data = part.data();
    body.size = part.size();
    body.more = true;
    my.parser->eager(true);
    bool good = true;
    bool full = false;
    // A full buffer is a reason to stop only where more is known to come: else its end may be all that is to be read.
    while (good && !full && !my.parser->is_done()) {
        good = my.feed(full, error);
        full = full || (body.size == 0 && my.parser->content_length_remaining().value_or(0) > 0);
        if (full && part.size() < maximumLength) {
            const std::size_t filled = part.size();
            part.resize(std::min(maximumLength, filled * 4));
            body.data = part.data() + filled;
            body.size = part.size() - filled;
            full = false;
        }
    }
    part.resize(part.size() - body.size);
    body.data = nullptr;
    body.size = 0;
    return good;
} catch (const std::exception& failure) {
    error = failure.what();
    part.clear();
    return false;
}

bool HttpResponseReader::isDone() const {
    return m_representation->parser && m_representation->parser->is_done();
}

bool HttpResponseReader::isReusable() const {
    const Representation& my = *m_representation;
    return isDone() && my.parser->keep_alive() && my.input.size() == 0 && !my.ended;
}

int HttpResponseReader::status() const {
    return m_representation->parser ? static_cast<int>(m_representation->parser->get().result_int()) : 0;
}

HttpClientIfc::Headers HttpResponseReader::headers() const {
    HttpClientIfc::Headers headers;
    for (const auto& field : m_representation->parser->get()) {
        headers.emplace(std::string(field.name_string()), std::string(field.value()));
    }
    return headers;
}

long long HttpResponseReader::announcedLength() const {
    const int code = status();
    if (code == 204 || code == 304) {
        return 0;
    }
    const auto length = m_representation->parser->content_length();
    return length ? static_cast<long long>(*length) : -1;
}

std::string HttpResponseReader::header(const std::string& name) const {
    const auto& message = m_representation->parser->get();
    const auto field = message.find(name);
    return field == message.end() ? std::string() : std::string(field->value());
}
