"""Random sessions, and what becomes of them on both sides."""
