#pragma once

#include "network/HttpClientIfc.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

/// Reads one response (RFC 9112) from bytes that it asks for, the body in parts. No operation throws.
class HttpResponseReader {
public:
    enum class Input { DATA, END, FAILED };
    /// Gives at least one byte and at most `capacity`; on FAILED with a reason in `error`.
    using Source = std::function<Input(char* bytes, std::size_t capacity, std::size_t& length, std::string& error)>;

    /// A body beyond `maximumBodyBytes` is a failure.
    HttpResponseReader(Source source, std::size_t maximumBodyBytes);
    ~HttpResponseReader();

    /// Reads status and headers, interim responses (1xx) skipped. False with the reason in `error`.
    bool readHeader(std::string& error);
    /// Reads the next part of the body, at most `maximumLength` bytes of it, into `part`, which it replaces. A part is
    /// shorter only at the body's end. False with the reason in `error`; `part` holds what came before.
    bool readBody(std::string& part, std::size_t maximumLength, std::string& error);

    /// Whether the whole response has been read.
    bool isDone() const;
    /// Whether the connection can carry another request; only when done.
    bool isReusable() const;

    int status() const;
    /// Names as they came.
    HttpClientIfc::Headers headers() const;
    /// The body's announced length, -1 when none is announced, 0 where the status allows no body.
    long long announcedLength() const;
    /// Value of the first header of that name, empty when there is none.
    std::string header(const std::string& name) const;

private:
    struct Representation;
    std::unique_ptr<Representation> m_representation;
};
