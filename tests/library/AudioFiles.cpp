#include "AudioFiles.h"

#include <taglib/attachedpictureframe.h>
#include <taglib/fileref.h>
#include <taglib/flacfile.h>
#include <taglib/id3v2tag.h>
#include <taglib/mp4file.h>
#include <taglib/mpegfile.h>
#include <taglib/tpropertymap.h>
#include <taglib/wavfile.h>
#include <taglib/xiphcomment.h>

#include <cstdlib>

namespace {

constexpr std::uint32_t kRate = 8000;

std::string Little(std::uint32_t value, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; ++i)
        text += static_cast<char>((value >> (8 * i)) & 0xFF);
    return text;
}

TagLib::ByteVector Bytes(const std::string& text) {
    return {text.data(), static_cast<unsigned int>(text.size())};
}

void AddId3Picture(TagLib::ID3v2::Tag& tag, const std::string& bytes, PictureSide side) {
    using Frame = TagLib::ID3v2::AttachedPictureFrame;
    auto* frame = new Frame; // the tag takes it over
    frame->setMimeType("image/jpeg");
    frame->setType(side == PictureSide::kFront ? Frame::FrontCover : Frame::BackCover);
    frame->setPicture(Bytes(bytes));
    tag.addFrame(frame);
}

TagLib::FLAC::Picture* XiphPicture(const std::string& bytes, PictureSide side) {
    using Picture = TagLib::FLAC::Picture;
    auto* picture = new Picture; // the file takes it over
    picture->setMimeType("image/jpeg");
    picture->setType(side == PictureSide::kFront ? Picture::FrontCover : Picture::BackCover);
    picture->setData(Bytes(bytes));
    return picture;
}

} // namespace

std::string WavBytes(std::uint32_t milliseconds) {
    const std::string data(kRate * 2 / 1000 * milliseconds, '\0');
    const auto size = static_cast<std::uint32_t>(data.size());
    return "RIFF" + Little(36 + size, 4) + "WAVEfmt " + Little(16, 4) + Little(1, 2) + Little(1, 2) +
           Little(kRate, 4) + Little(kRate * 2, 4) + Little(2, 2) + Little(16, 2) + "data" + Little(size, 4) +
           data;
}

bool Encode(const std::string& elements, const std::string& path) {
    const std::string command =
        "gst-launch-1.0 -q audiotestsrc num-buffers=50 samplesperbuffer=960 ! "
        "audio/x-raw,rate=48000,channels=2 ! audioconvert ! " +
        elements + " ! filesink location=\"" + path + "\" >/dev/null 2>&1";
    return std::system(command.c_str()) == 0;
}

bool Tag(const std::string& path, const std::map<std::string, std::string>& tags) {
    TagLib::FileRef file(path.c_str());
    if (file.isNull())
        return false;
    TagLib::PropertyMap properties;
    for (const auto& [name, value] : tags)
        properties.insert(name, TagLib::StringList(TagLib::String(value, TagLib::String::UTF8)));
    file.file()->setProperties(properties);
    return file.save();
}

std::string JpegBytes(const std::string& mark) {
    return "\xFF\xD8\xFF\xE0" + mark;
}

bool AddPicture(const std::string& path, const std::string& bytes, PictureSide side) {
    TagLib::FileRef reference(path.c_str());
    TagLib::File* file = reference.file();
    if (auto* mpeg = dynamic_cast<TagLib::MPEG::File*>(file)) {
        AddId3Picture(*mpeg->ID3v2Tag(true), bytes, side);
    } else if (auto* wav = dynamic_cast<TagLib::RIFF::WAV::File*>(file)) {
        AddId3Picture(*wav->ID3v2Tag(), bytes, side);
    } else if (auto* flac = dynamic_cast<TagLib::FLAC::File*>(file)) {
        flac->addPicture(XiphPicture(bytes, side));
    } else if (auto* mp4 = dynamic_cast<TagLib::MP4::File*>(file)) {
        TagLib::MP4::CoverArtList list;
        list.append(TagLib::MP4::CoverArt(TagLib::MP4::CoverArt::JPEG, Bytes(bytes)));
        mp4->tag()->setItem("covr", list);
    } else if (auto* xiph = file ? dynamic_cast<TagLib::Ogg::XiphComment*>(file->tag()) : nullptr) {
        xiph->addPicture(XiphPicture(bytes, side));
    } else {
        return false;
    }
    return file->save();
}
