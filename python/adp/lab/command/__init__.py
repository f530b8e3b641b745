"""The program adp-lab: labs that stay, until somebody ends them.

`up` reads the topology and starts a background process, the lab's `keeper`. It makes everything in namespaces of its
own, among them one of process ids, in which it is the first process: when it ends, however that happens, the kernel ends
all others. The other commands read `lab.json` in the lab's run folder and enter the namespaces through the keeper's
entries in /proc.

The modules, each using those before it: `words` (sentences and tables), `run_folder` (where a lab's files are, and
whether it runs), `record` (what lab.json says), `programs` (processes that are watched), `node` (a device or host),
`cabling` (the interfaces of all cables), `keeper`, `namespaces` (how commands enter), `up` (starting and ending a lab),
`show` (its tables), `ends` (ports and interfaces by name), `capture`, and `main` with the command line (`options`).
"""
