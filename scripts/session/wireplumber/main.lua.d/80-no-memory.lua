-- A program plays at full volume to the default output, whatever was set for it earlier: what one
-- test did is nothing to the next.
stream_defaults.properties["restore-props"] = false
stream_defaults.properties["restore-target"] = false
