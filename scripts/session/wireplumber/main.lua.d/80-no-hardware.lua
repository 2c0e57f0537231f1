-- A private session leaves the machine's devices to whoever uses them.
alsa_monitor.enabled = false
v4l2_monitor.enabled = false
libcamera_monitor.enabled = false
