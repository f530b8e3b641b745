"""The image itself, and what only an engine does with it."""

from adp.lab.process import poll_until


def test_the_container_says_whether_it_is_healthy(make_device, engine):
    device = make_device()
    assert device.health()
    device.run("sh", "-c", "kill -STOP $(pidof vdeviced)")
    poll_until(lambda: not device.health(), 60, "Ill health")
    device.run("sh", "-c", "kill -CONT $(pidof vdeviced)")
    poll_until(device.health, 60, "Health")


def test_the_image_says_what_it_is(engine):
    labels = engine.labels()
    assert labels["org.opencontainers.image.title"] == "adp: a virtual switch device and its tools"
    assert labels["org.opencontainers.image.version"]
    assert labels["org.opencontainers.image.licenses"]


def test_the_image_has_no_pages(make_device, engine):
    device = make_device()
    assert device.run("find", "/usr/share/man", "/usr/share/doc", "-type", "f", "!", "-name", "copyright") == ""
