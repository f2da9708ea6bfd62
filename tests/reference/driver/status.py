"""The driver's documents about all queues, and the commands that ask for them."""

from nodes import Node

ANNOUNCEMENT_QUEUE = 2000
ANNOUNCEMENT_PORT = "6200"
ANNOUNCEMENT_CHANNEL = "2"


class Status:
    """Part of the driver."""

    def queue_status(self):
        queues = Node("queues")
        for server in self.sorted_servers():
            for queue in server.sorted_queues():
                queues.append(queue.get_status())
        return queues

    def queue_status_132(self):
        queues = Node("queues")
        for server in self.sorted_servers():
            for queue in server.sorted_queues():
                queues.append(queue.get_status_132())
        return queues

    def update_queue_status_variable(self):
        self.core.set_variable(1006, self.queue_status().to_text())
        self.core.set_variable(1004, self.queue_status_132().to_text())
        self.update_room_map_info_variable()

    def update_room_map_info_variable(self):
        info = Node("info")
        for server in self.sorted_servers():
            for queue in server.sorted_queues():
                self.append_queue_map(info, queue)
            announcement = server.announcement
            if announcement is not None and announcement.addresses:
                self.append_announcement_map(info, announcement)
        self.core.set_variable(1009, info.to_text())

    def append_queue_map(self, info, queue):
        element = info.add("audioQueueInfo")
        element.append(queue.get_status())
        for room in sorted(queue.rooms):
            client = queue.rooms[room]
            append_room(element, room, client.ip, client.port, client.channel)

    def append_announcement_map(self, info, announcement):
        """An announcement shows as a playing queue."""
        element = info.add("audioQueueInfo")
        queue = element.add("queue").set("id", ANNOUNCEMENT_QUEUE)
        queue.set("name", "Announcement").set("state", "Play")
        queue.add("song").set("id", 1).set("source", 1)
        queue.add("next").set("id", 1).set("source", 1)
        queue.set("index", 1)
        rooms = queue.add("rooms")
        for room in announcement.rooms:
            rooms.set("id", room)
        for room, address in zip(announcement.rooms, announcement.addresses):
            append_room(element, room, address, ANNOUNCEMENT_PORT, ANNOUNCEMENT_CHANNEL)

    def on_get_queue_status(self, _message, ret):
        ret(self.queue_status_132().to_text())

    def on_get_queue_status_v2(self, _message, ret):
        ret(self.queue_status().to_text())

    def on_get_queue_info(self, message):
        queue = self.get_queue(message.number("ROOM_ID"), message.number("QUEUE_ID"))
        return Node("info") if queue is None else queue.get_info()

    def on_request_current_media_info(self, message, _ret):
        queue = self.queue_from_room(message.number("ROOM_ID"))
        if queue is not None:
            queue.update_room_media_variable(queue.get_current_media(), None, False)


def append_room(parent, room, ip, port, channel):
    element = parent.add("roomInfo").set("roomId", room).set("ip", ip)
    element.set("port", port).set("channel", channel)
