"""Waiting for a condition: the timeout and poll interval that the acceptance tests share."""

import time

TIMEOUT = 30  # seconds that anything may take on a busy machine
POLL_INTERVAL = 0.1  # seconds at first; what takes longer is looked at less and less often
LONGEST_POLL_INTERVAL = 0.5


class ExpectationFailed(AssertionError):
    """What was expected did not come; the message says what was there instead."""


def polls(timeout, poll_interval=None):
    """Comes round at once, then after each poll interval until the timeout; a given interval does not grow."""
    deadline = time.monotonic() + timeout
    pause = poll_interval or POLL_INTERVAL
    while True:
        yield
        if time.monotonic() > deadline:
            return
        time.sleep(pause)
        if poll_interval is None:
            pause = min(1.5 * pause, LONGEST_POLL_INTERVAL)


def wait_until(condition, what, timeout=TIMEOUT, poll_interval=None):
    """Returns the first true value of condition(), polled until the timeout."""
    for _ in polls(timeout, poll_interval):
        value = condition()
        if value:
            return value
    raise ExpectationFailed(f"timeout after {timeout} seconds: {what}")
