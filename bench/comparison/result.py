"""One line of the table."""
import statistics
from dataclasses import dataclass, field


@dataclass
class Result:
    name: str
    title: str
    unit: str        # what the times are for, or "byte" for memory
    at_most: float
    aim: float
    ours: list       # per unit, in nanoseconds or bytes, round by round
    peer: list
    ours_processor: list = field(default_factory=list)  # empty for memory
    peer_processor: list = field(default_factory=list)
    problem: str = ""  # why the comparison is none: the answers differ

    @property
    def ratios(self):
        return sorted(ours / peer for ours, peer in zip(self.ours, self.peer))

    @property
    def ratio(self):
        """The median of the rounds' ratios: what disturbs a round disturbs both of its sides."""
        return statistics.median(self.ratios)

    @property
    def processor_ratio(self):
        if not self.ours_processor:
            return None
        return statistics.median(ours / peer for ours, peer
                                 in zip(self.ours_processor, self.peer_processor))

    @property
    def spread(self):
        """Between which ratios the middle half of the rounds lies; None for a single round."""
        if len(self.ratios) < 2:
            return None
        quarters = statistics.quantiles(self.ratios, n=4, method="inclusive")
        return quarters[0], quarters[2]

    @property
    def verdict(self):
        if self.problem:
            return "WRONG"
        if self.ratio <= self.aim:
            return "aim met"
        return "within" if self.ratio <= self.at_most else "MISSED"
