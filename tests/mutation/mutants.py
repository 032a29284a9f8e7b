"""What a mutant is, and the families of mutants: the rows of the exported calls, and the rows of the tables."""
import dataclasses


@dataclasses.dataclass
class Mutant:
    table: str        # what it belongs to
    row: str          # which row of it
    column: str       # what of the row is changed
    change: str       # from what to what
    tests: list       # patterns of the names of the tests that are to notice, the likeliest first
    number: int = 0   # by which it is switched on; also says where it stands in the report
    text: str = ""    # of a function: its whole body with the change
    cell: tuple = ()  # of a table: the row's index and its new text

    def __str__(self):
        return f"{self.number:>5}  {self.table}: {self.row}, {self.column}: {self.change}"
