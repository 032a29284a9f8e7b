"""The small binary files beside a recording: their layouts, and how to make them from a described content."""
