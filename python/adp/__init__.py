"""adp from Python: the lab, see adp.lab."""
