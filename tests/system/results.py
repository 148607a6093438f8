"""What the checks print of their results."""


def report(results):
    """Prints "ok NAME" or "not ok NAME: why" for each: a why that is empty is good. Result: the status to end with."""
    for name, wrong in results.items():
        print(f"not ok {name}: {wrong}" if wrong else f"ok {name}")
    return 1 if any(results.values()) else 0
