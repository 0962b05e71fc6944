#include "network/HttpAnswer.h"

#include <QList>

#include <algorithm>
#include <utility>

namespace kestrant {

namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

std::optional<qint64> decimal(const QByteArray& text) {
    bool isNumber = !text.isEmpty() && std::all_of(text.begin(), text.end(), isDigit);
    const qint64 number = isNumber ? text.toLongLong(&isNumber) : 0;
    return isNumber ? std::optional(number) : std::nullopt;
}

}  // namespace

std::optional<HttpResult> HttpAnswerReader::take(QByteArrayView bytes) {
    const qint64 room = limit_ - received_;
    const bool isTooLong = bytes.size() > room;
    if (isTooLong)
        bytes.truncate(room);
    received_ += bytes.size();
    buffer_.append(bytes);
    while (!result_ && advance()) {
    }
    buffer_.remove(0, position_);
    scanned_ -= position_;
    position_ = 0;
    if (isTooLong && !result_) {
        if (part_ == Part::statusLine || part_ == Part::header)
            fail("the head of the answer is too long");
        else
            complete(std::nullopt);
    }
    return result_;
}

HttpResult HttpAnswerReader::end() {
    if (!result_ && part_ == Part::rest)
        complete(body_);
    else if (!result_)
        fail(received_ == 0 ? "the connection ended without an answer" : "the answer ends early");
    return *result_;
}

bool HttpAnswerReader::advance() {
    if (part_ == Part::body || part_ == Part::chunk || part_ == Part::rest)
        return takeBody();
    const auto line = takeLine();
    if (line)
        readLine(*line);
    return line.has_value();
}

std::optional<QByteArray> HttpAnswerReader::takeLine() {
    const qsizetype end = buffer_.indexOf('\n', std::max(position_, scanned_));
    if (end < 0) {
        scanned_ = buffer_.size();
        return std::nullopt;
    }
    QByteArray line = buffer_.mid(position_, end - position_);
    if (line.endsWith('\r'))
        line.chop(1);
    position_ = end + 1;
    scanned_ = position_;
    return line;
}

void HttpAnswerReader::readLine(const QByteArray& line) {
    switch (part_) {
    case Part::statusLine:
        readStatus(line);
        break;
    case Part::header:
        if (line.isEmpty())
            endHead();
        else
            readHeader(line);
        break;
    case Part::chunkSize:
        readChunkSize(line);
        break;
    case Part::chunkEnd:
        if (line.isEmpty())
            part_ = Part::chunkSize;
        else
            fail("a chunk is longer than announced");
        break;
    default:  // a trailer
        if (line.isEmpty())
            complete(body_);
    }
}

/// "HTTP/1.1 200 OK"
void HttpAnswerReader::readStatus(const QByteArray& line) {
    constexpr qsizetype shortest = 12;
    const auto status = decimal(line.mid(9, 3));
    if (line.size() < shortest || !line.startsWith("HTTP/1.") || !isDigit(line[7]) || line[8] != ' ' ||
        (line.size() > shortest && line[shortest] != ' ') || status.value_or(0) < 100) {
        fail("no answer of this protocol");
        return;
    }
    reply_ = {.status = static_cast<int>(*status)};
    length_.reset();
    isChunked_ = false;
    part_ = Part::header;
}

void HttpAnswerReader::readHeader(const QByteArray& line) {
    // A header may go on in lines that begin with white space; none that matters here does.
    if (line.startsWith(' ') || line.startsWith('\t'))
        return;
    const qsizetype colon = line.indexOf(':');
    if (colon < 1) {
        fail("a header without a name");
        return;
    }
    const QByteArray name = line.left(colon).toLower();
    const QByteArray value = line.mid(colon + 1).trimmed();
    if (name == "retry-after") {
        reply_.retryAfter = value;
    } else if (name == "location") {
        reply_.location = value;
    } else if (name == "content-length") {
        const auto length = decimal(value);
        if (!length || (length_ && length_ != length))
            fail("a length that is none");
        length_ = length;
    } else if (name == "transfer-encoding" && value.toLower() != "identity") {
        isChunked_ = value.toLower() == "chunked";
        if (!isChunked_)
            fail("an encoding that was not asked for");
    }
}

void HttpAnswerReader::endHead() {
    constexpr int switchingProtocols = 101;
    constexpr int noContent = 204;
    constexpr int notModified = 304;
    if (reply_.status == switchingProtocols) {
        fail("another protocol that was not asked for");
    } else if (reply_.status < 200) {
        part_ = Part::statusLine;
    } else if (reply_.status == noContent || reply_.status == notModified) {
        complete(QByteArray());
    } else if (isChunked_) {
        part_ = Part::chunkSize;
    } else if (length_) {
        remaining_ = *length_;
        part_ = Part::body;
    } else {
        part_ = Part::rest;
    }
}

/// "1a;extension"
void HttpAnswerReader::readChunkSize(const QByteArray& line) {
    constexpr qsizetype mostDigits = 15;
    constexpr int hexadecimal = 16;
    const QByteArray digits = line.split(';').front().trimmed();
    bool isNumber = !digits.isEmpty() && digits.size() <= mostDigits &&
                    std::all_of(digits.begin(), digits.end(), [](char c) {
                        return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
                    });
    remaining_ = isNumber ? digits.toLongLong(&isNumber, hexadecimal) : 0;
    if (!isNumber)
        fail("a chunk without a length");
    else
        part_ = remaining_ > 0 ? Part::chunk : Part::trailer;
}

bool HttpAnswerReader::takeBody() {
    const qsizetype available = buffer_.size() - position_;
    const qsizetype taken =
        part_ == Part::rest ? available : static_cast<qsizetype>(std::min<qint64>(available, remaining_));
    body_.append(buffer_.constData() + position_, taken);
    position_ += taken;
    if (part_ == Part::rest)
        return false;
    remaining_ -= taken;
    if (remaining_ > 0)
        return false;
    if (part_ == Part::body)
        complete(body_);
    else
        part_ = Part::chunkEnd;
    return true;
}

void HttpAnswerReader::complete(std::optional<QByteArray> body) {
    reply_.body = std::move(body);
    result_ = reply_;
}

void HttpAnswerReader::fail(const char* description) {
    result_ = tl::unexpected(TransportError{QString::fromLatin1(description)});
}

}  // namespace kestrant
