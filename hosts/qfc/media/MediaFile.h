#pragma once

#include "hosts/qfc/media/FfmpegHandles.h"
#include "hosts/qfc/media/MediaFacts.h"
#include "hosts/qfc/media/TimeLimit.h"
#include "hosts/qfc/pictures/Picture.h"

#include <string>
#include <string_view>

struct AVInputFormat;
struct AVStream;

namespace qfc::host {

// One media file, opened for decoding: its reader is chosen from a list by content and name, it may open no other file
// or address, and its time is limited. One thread at a time.
class MediaFile {
public:
    // Throws NoMediaError when neither its name nor its content is that of a media file, and MediaError when it is
    // broken or takes too long.
    MediaFile(std::string path, TimeLimit limit);
    ~MediaFile();
    MediaFile(const MediaFile&) = delete;
    MediaFile& operator=(const MediaFile&) = delete;

    const std::string& Path() const { return m_path; }

    // An image's size and the codec's true picture format are known only once it is decoded; see Thumbnailer.
    const MediaFacts& Facts() const { return m_facts; }

    // The file does not say how long it is; Facts holds no more than a guess from its size.
    bool IsDurationGuessed() const;

    // Null where the file has no such stream. Cover art is no picture stream of a sound.
    AVStream* PictureStream() const { return m_picture; }
    AVStream* SoundStream() const { return m_sound; }

    // What the file itself demands before a frame of its film is shown. Images are never turned here.
    Turn DisplayTurn() const;

    // The size a frame has when its pixels are made square, before any turn.
    PictureSize SquarePixels(PictureSize frame) const;

    // Reads on at the next packet of the stream, dropping all others. False at the end, on an error, or out of time.
    bool ReadPacket(const AVStream& stream, AVPacket& packet);

    // Goes to the last key frame at or before the moment, in the stream's time base.
    bool SeekBefore(const AVStream& stream, std::int64_t moment);

    const TimeLimit& Limit() const { return m_limit; }

private:
    void OpenBytes();
    const AVInputFormat* ProbedReader();
    const AVInputFormat* ReaderByName();
    void Open(const AVInputFormat& reader);
    void OpenPictureByName();
    void Allocate();
    void ChooseStreams();
    AVStream* ChooseImage() const;
    AVStream* Choose(int mediaType) const;
    void FillFacts();
    void FillSound();

    std::string m_path;
    std::string_view m_promised;  // the reader that the name promises; may be empty
    std::string m_head;           // the first bytes
    bool m_isPicture = false;
    TimeLimit m_limit;
    MediaFacts m_facts;
    IoPtr m_io;  // closed after the format that reads from it
    FormatPtr m_format;
    AVStream* m_picture = nullptr;
    AVStream* m_sound = nullptr;
};

}  // namespace qfc::host
