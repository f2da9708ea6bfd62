"""The simulated outside of a replayed session: what a transcript declares and the driver meets."""
