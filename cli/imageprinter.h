#pragma once

#include "capture/capture.h"
#include "cli/dialogue.h"

#include <memory>

namespace VEK::Cli {

/// What all requests together have.
struct ImageTotals
{
    int words = 0;
    qint64 wordBits = 0;
    int reads = 0;
    qint64 readBits = 0;
    int frames = 0;
    qint64 bytes = 0;

    void add(ImageRow const& row)
    {
        words += !row.bits.isEmpty();
        wordBits += row.bits.size();
        reads += row.size >= 0;
        readBits += qMax(row.size, 0);
        ++frames;
        bytes += row.frame.size();
    }
};

/// Prints requests as they come: a dynamic core may have millions.
class ImagePrinter
{
public:
    virtual ~ImagePrinter() = default;
    virtual void begin(Capture const& capture, QList<int> const& places) = 0;
    virtual void row(ImageRow const& row) = 0;
    virtual void end(ImageTotals const& totals) = 0;

    bool isWritten() const { return m_isWritten; }

protected:
    void line(QString const& text);

private:
    bool m_isWritten = true;
};

/// With the bytes of each request if `frames`.
std::unique_ptr<ImagePrinter> makeImagePrinter(bool json, bool frames);

} // namespace VEK::Cli
