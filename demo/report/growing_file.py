"""A text file that another process writes line by line."""


class GrowingFile:
    def __init__(self, path):
        self._path = path
        self._position = 0

    def new_lines(self):
        """The lines that were completed since the last call, without their ends; none while there is no file."""
        if not self._path.exists():
            return []
        with self._path.open("rb") as file:
            file.seek(self._position)
            text, end, _ = file.read().rpartition(b"\n")
        self._position += len(text) + len(end)
        return text.decode(errors="replace").split("\n") if end else []
