# SPDX-License-Identifier: MIT
"""Waiting for a condition: the timeout and poll interval that the acceptance tests share."""

import time

TIMEOUT = 30  # seconds that anything may take on a busy machine
POLL_INTERVAL = 0.2  # seconds


class ExpectationFailed(AssertionError):
    """What was expected did not come; the message says what was there instead."""


def wait_until(condition, what, timeout=TIMEOUT, poll_interval=POLL_INTERVAL):
    """Returns the first true value of condition(), polled until the timeout."""
    deadline = time.monotonic() + timeout
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            raise ExpectationFailed(f"timeout after {timeout} seconds: {what}")
        time.sleep(poll_interval)
