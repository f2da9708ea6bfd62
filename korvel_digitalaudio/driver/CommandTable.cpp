#include <boost/bind/bind.hpp>

#include "driver/korvel_digitalaudio.h"

const korvel_digitalaudio::Command korvel_digitalaudio::s_commands[] = {
    {"GO_TO_SONG", &korvel_digitalaudio::OnGoToSong},
    {"EDIT_QUEUE", &korvel_digitalaudio::OnEditQueue},
    {"REMOVE_QUEUE", &korvel_digitalaudio::OnRemoveQueue},
    {"ADD_ROOMS_TO_SESSION", &korvel_digitalaudio::OnAddRoomsToSession},
    {"REMOVE_ROOMS_FROM_SESSION", &korvel_digitalaudio::OnRemoveRoomsFromSession},
    {"ADD_ALBUM_MP3", &korvel_digitalaudio::OnAddAlbumMp3},
    {"ADD_SONG", &korvel_digitalaudio::OnAddSong},
    {"ADD_IR_STREAM", &korvel_digitalaudio::OnAddIRSTREAM},
    {"REMOVE_SONG", &korvel_digitalaudio::OnRemoveSong},
    {"ADD_SONG_LIST", &korvel_digitalaudio::OnAddSongList},
    {"ADD_ALBUM_LIST", &korvel_digitalaudio::OnAddAlbumList},
    {"SHUFFLE", &korvel_digitalaudio::OnShuffle},
    {"REPEAT", &korvel_digitalaudio::OnRepeat},
    {"JOIN", &korvel_digitalaudio::OnJoin},
    {"REMOVE", &korvel_digitalaudio::OnRemove},
    {"QUEUE_ALL", &korvel_digitalaudio::OnQueueAll},
    {"GET_QUEUE_STATUS", &korvel_digitalaudio::OnGetQueueStatus},
    {"GET_QUEUE_STATUSV2", &korvel_digitalaudio::OnGetQueueStatusV2},
    {"STOP", &korvel_digitalaudio::OnStop},
    {"PLAY", &korvel_digitalaudio::OnPlay},
    {"PAUSE", &korvel_digitalaudio::OnPause},
    {"SKIP_FWD", &korvel_digitalaudio::OnSkipFwd},
    {"SKIP_REV", &korvel_digitalaudio::OnSkipRev},
    {"ADD_PLAYLIST", &korvel_digitalaudio::OnAddPlaylist},
    {"SAVE_PLAYLIST", &korvel_digitalaudio::OnSavePlaylist},
    {"DELETE_PLAYLIST", &korvel_digitalaudio::OnDeletePlaylist},
    {"RENAME_PLAYLIST", &korvel_digitalaudio::OnRenamePlaylist},
    {"GET_ROOM_HISTORY", &korvel_digitalaudio::OnGetRoomHistory},
    {"REQUEST_CURRENT_MEDIA_INFO", &korvel_digitalaudio::OnRequestCurrentMediaInfo},
    {"GET_SETTINGS", &korvel_digitalaudio::OnGetSettings},
    {"SET_PLAYLIST_CLEAR_FLAG", &korvel_digitalaudio::OnSetPlaylistClearFlag},
    {"SET_PLAYLIST_CLEAR_DELAY", &korvel_digitalaudio::OnSetPlaylistClearDelay},
    {"SET_PLAY_PREFERENCE", &korvel_digitalaudio::OnSetPlayPreference},
    {"GET_RHAPSODY_MY_PLAYLISTS", &korvel_digitalaudio::OnGetRhapsodyMyPlaylists},
    {"UPDATE_SECONDARY_MEDIA_INFO", &korvel_digitalaudio::OnUpdateSecondaryMediaInfo},
};

void korvel_digitalaudio::RegisterCommands() {
    using namespace boost::placeholders;
    for (const Command& command : s_commands)
        RegisterCmd(command.name, boost::bind(command.handler, this, _1, _2));
    RegisterUICmd("GET_QUEUE_INFO", boost::bind(&korvel_digitalaudio::OnGetQueueInfo, this, _1));
}
