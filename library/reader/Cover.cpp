#include "library/Cover.h"

#include <taglib/attachedpictureframe.h>
#include <taglib/fileref.h>
#include <taglib/flacfile.h>
#include <taglib/id3v2tag.h>
#include <taglib/mp4file.h>
#include <taglib/mpegfile.h>
#include <taglib/wavfile.h>
#include <taglib/xiphcomment.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string_view>

#include "BoundedStream.h"
#include "FolderPicture.h"
#include "TagReader.h"

namespace korvel::media {

namespace {

namespace fs = std::filesystem;

// By what the bytes are: a type that a tag states would be passed on to browsers unseen. "" for no picture.
std::string MimeTypeOf(std::string_view bytes) {
    if (bytes.starts_with("\xFF\xD8\xFF"))
        return "image/jpeg";
    if (bytes.starts_with("\x89PNG\r\n"))
        return "image/png";
    if (bytes.starts_with("GIF8"))
        return "image/gif";
    if (bytes.starts_with("RIFF") && bytes.substr(0, 12).ends_with("WEBP"))
        return "image/webp";
    return "";
}

std::string_view View(const TagLib::ByteVector& bytes) {
    return {bytes.data(), bytes.size()};
}

void AddPictures(const TagLib::ID3v2::Tag* tag, std::vector<TagPicture>& pictures) {
    if (!tag)
        return;
    for (const TagLib::ID3v2::Frame* frame : tag->frameList("APIC")) {
        using PictureFrame = TagLib::ID3v2::AttachedPictureFrame;
        if (const auto* picture = dynamic_cast<const PictureFrame*>(frame))
            pictures.push_back({picture->picture(), picture->type() == PictureFrame::FrontCover});
    }
}

void AddPictures(const TagLib::List<TagLib::FLAC::Picture*>& list, std::vector<TagPicture>& pictures) {
    for (const TagLib::FLAC::Picture* picture : list)
        pictures.push_back({picture->data(), picture->type() == TagLib::FLAC::Picture::FrontCover});
}

void AddPictures(const TagLib::MP4::Tag* tag, std::vector<TagPicture>& pictures) {
    if (!tag || !tag->contains("covr"))
        return;
    for (const TagLib::MP4::CoverArt& art : tag->item("covr").toCoverArtList())
        pictures.push_back({art.data(), true});
}

std::optional<CoverImage> EmbeddedPicture(const std::string& location) {
    // To open a pipe would wait for its other end.
    if (!fs::is_regular_file(location))
        return std::nullopt;
    BoundedStream stream(location.c_str());
    if (!stream.isOpen())
        return std::nullopt;
    const TagLib::FileRef reference(&stream, false);
    if (!reference.file() || !reference.file()->isValid())
        return std::nullopt;
    std::vector<TagPicture> pictures = ReadPictures(*reference.file());
    if (pictures.empty())
        return std::nullopt;
    const auto front =
        std::find_if(pictures.begin(), pictures.end(), [](const auto& p) { return p.isFrontCover; });
    const std::string_view bytes = View(front != pictures.end() ? front->bytes : pictures.front().bytes);
    return CoverImage{MimeTypeOf(bytes), std::string(bytes)};
}

std::string FindFolderPicture(const fs::path& folder) {
    std::error_code error;
    std::string best;
    int bestRank = -1;
    fs::directory_iterator entry(folder, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        const int rank = FolderPictureRank(entry->path().filename().native());
        std::error_code typeError;
        if (rank >= 0 && (bestRank < 0 || rank < bestRank) && entry->is_regular_file(typeError)) {
            best = entry->path().native();
            bestRank = rank;
        }
    }
    return best;
}

std::optional<CoverImage> FolderPicture(const std::string& location) {
    const std::string path = FindFolderPicture(fs::path(location).parent_path());
    if (path.empty() || fs::file_size(path) > kMaxCoverBytes)
        return std::nullopt;
    std::ifstream file(path, std::ios::binary);
    std::string bytes(std::istreambuf_iterator<char>(file), {});
    return CoverImage{MimeTypeOf(bytes), std::move(bytes)};
}

} // namespace

std::vector<TagPicture> ReadPictures(TagLib::File& file) {
    std::vector<TagPicture> pictures;
    if (auto* mpeg = dynamic_cast<TagLib::MPEG::File*>(&file))
        AddPictures(mpeg->ID3v2Tag(), pictures);
    else if (auto* wav = dynamic_cast<TagLib::RIFF::WAV::File*>(&file))
        AddPictures(wav->ID3v2Tag(), pictures);
    else if (auto* flac = dynamic_cast<TagLib::FLAC::File*>(&file))
        AddPictures(flac->pictureList(), pictures);
    else if (auto* mp4 = dynamic_cast<TagLib::MP4::File*>(&file))
        AddPictures(mp4->tag(), pictures);
    else if (auto* xiph = dynamic_cast<TagLib::Ogg::XiphComment*>(file.tag()))
        AddPictures(xiph->pictureList(), pictures);
    std::erase_if(pictures, [](const TagPicture& picture) {
        return picture.bytes.size() > kMaxCoverBytes || MimeTypeOf(View(picture.bytes)).empty();
    });
    return pictures;
}

std::optional<CoverImage> ReadCover(const std::string& location) {
    try {
        auto cover = EmbeddedPicture(location);
        if (!cover)
            cover = FolderPicture(location);
        return cover && !cover->mimeType.empty() ? cover : std::nullopt;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

} // namespace korvel::media
